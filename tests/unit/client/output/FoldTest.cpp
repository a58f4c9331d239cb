// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Fold.h"

#include <gtest/gtest.h>

namespace
{

Result outcome(const std::string& target, std::string hint)
{
    Result result;
    result.target = target;
    result.fail({ExitCode::verification, Category::lost, "rolling the change back", std::move(hint)});
    return result;
}

Result lostCard(const std::string& target)
{
    return outcome(target, target + " is lost (" + target + "); try `tarvelctl ip rescue " + target + "`");
}

TEST(FoldTest, PutsFailuresTogetherThatDifferInTheNameAlone)
{
    const std::vector<Result> folded = fold({lostCard("card1"), lostCard("card2"), lostCard("card12")});
    ASSERT_EQ(folded.size(), 1U);
    EXPECT_EQ(folded[0].target, "card[1-2],card12");
    EXPECT_EQ(folded[0].hint, "NAME is lost (NAME); try `tarvelctl ip rescue NAME`");
}

TEST(FoldTest, LeavesTheNameOfASingleCard)
{
    EXPECT_EQ(fold({lostCard("card1")}).front().hint, lostCard("card1").hint);
}

TEST(FoldTest, LeavesOutWhatIsOfOneCardAlone)
{
    Result one = outcome("card1", "gone");
    one.fields = {{"last_address", "10.0.0.1", true}, {"there_now", "nobody"}};
    Result other = outcome("card2", "gone");
    other.fields = {{"last_address", "10.0.0.2", true}, {"there_now", "nobody"}};
    const std::vector<Result> folded = fold({one, other});
    ASSERT_EQ(folded.size(), 1U);
    EXPECT_EQ(folded[0].fields, (Row{{"last_address", Cell(), true}, {"there_now", "nobody"}}));
    EXPECT_EQ(fold({one}).front().fields, one.fields);
    other.fields.back().value = "somebody";
    EXPECT_EQ(fold({one, other}).size(), 2U);
}

TEST(FoldTest, KeepsFailuresApartThatDifferInMore)
{
    EXPECT_EQ(fold({outcome("card1", "card1 is at 10.0.0.1"), outcome("card2", "card2 is at 10.0.0.2")}).size(), 2U);
}

TEST(FoldTest, LeavesWhatIsSaidOfAllInTheSameWords)
{
    const std::string both = "card1 and card2 both lead to 10.0.0.12";
    EXPECT_EQ(fold({outcome("card1", both), outcome("card2", both)}).front().hint, both);
}

TEST(FoldTest, TakesANameForOneOnlyWhereItIsAWord)
{
    const std::vector<Result> folded = fold({outcome("a", "a card"), outcome("b", "b card"), outcome("ar", "ar card")});
    ASSERT_EQ(folded.size(), 1U);
    EXPECT_EQ(folded[0].hint, "NAME card");
    EXPECT_EQ(fold({outcome("c", "the same card"), outcome("d", "the same card")}).front().hint, "the same card");
}

} // namespace
