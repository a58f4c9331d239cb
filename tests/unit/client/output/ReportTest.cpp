// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Report.h"

#include "client/output/Console.h"

#include <gtest/gtest.h>
#include <sstream>

namespace
{

const std::string longHint = "nobody answered by this name, for one of many reasons that are all told here at length";

Result failed(const std::string& target, std::string hint = longHint, Category category = Category::notFound)
{
    Result result;
    result.target = target;
    result.fail({ExitCode::noAnswer, category, "looking for the card", std::move(hint)});
    return result;
}

std::string told(const std::vector<Result>& results, bool isQuiet = false)
{
    const Console console(isQuiet, false);
    testing::internal::CaptureStderr();
    Report report(console);
    for (const Result& result : results) {
        report.tell(result);
    }
    report.count(results);
    return testing::internal::GetCapturedStderr();
}

TEST(ReportTest, TellsALongHintOnceForEachCategory)
{
    EXPECT_EQ(told({failed("card1"), failed("card2"), failed("card3", longHint, Category::timeout)}),
              "error: card1: not-found while looking for the card\n  " + longHint +
                  "\n"
                  "error: card2: not-found while looking for the card\n"
                  "error: card3: timeout while looking for the card\n  " +
                  longHint + "\n0 ok, 2 not found, 1 timeout\n");
}

TEST(ReportTest, TellsSeveralSentencesOfAFailureBelowItsLine)
{
    const Console console(false, false);
    testing::internal::CaptureStderr();
    Report(console).tellAll(failed(std::string(100, 'x')), {"one", "an\nother"});
    const std::string text = testing::internal::GetCapturedStderr();
    const std::string head = text.substr(0, text.find('\n'));
    EXPECT_LE(head.size(), 80U);
    EXPECT_NE(text.find("not-found while looking for the card"), std::string::npos);
    EXPECT_TRUE(text.ends_with("\n  one\n  an\\x0aother\n")) << text;
}

TEST(ReportTest, TakesAHintThatDiffersInTheTargetAloneForTheSame)
{
    const std::string rest = " has no address on this network; there are ways to give it one, and here they are";
    const std::string text = told({failed("card1", "card1" + rest), failed("card2", "card2" + rest)});
    EXPECT_EQ(text.find("card2" + rest), std::string::npos);
}

TEST(ReportTest, TellsWhatIsTrueOfOneCardOnly)
{
    const std::string text =
        told({failed("card1", longHint + " at 10.0.0.1"), failed("card2", longHint + " at 10.0.0.2")});
    EXPECT_NE(text.find("at 10.0.0.1\n"), std::string::npos);
    EXPECT_NE(text.find("at 10.0.0.2\n"), std::string::npos);
}

TEST(ReportTest, TellsWhatIsOfOneCardAloneBesideIt)
{
    Result one = failed("card1");
    one.fields = {{"last_address", "10.0.0.1", true}, {"none", Cell(), true}, {"last_heard", "2 min ago", true}};
    EXPECT_EQ(told({one}),
              "error: card1: not-found while looking for the card (10.0.0.1, 2 min ago)\n  " + longHint + "\n");
    one.target = std::string(40, 'c');
    EXPECT_EQ(told({one}), "error: " + one.target + ": not-found (10.0.0.1, 2 min ago)\n  " + longHint + "\n");
    one.target = std::string(60, 'c');
    EXPECT_EQ(told({one}), "error: not-found while looking for the card\n  " + one.target +
                               "\n  (10.0.0.1, 2 min ago)\n  " + longHint + "\n");
}

TEST(ReportTest, TellsAShortHintInTheSameLine)
{
    EXPECT_EQ(told({failed("card1", "busy")}), "error: card1: not-found while looking for the card: busy\n");
}

TEST(ReportTest, HasNoFirstLineBeyond80Columns)
{
    for (std::size_t size = 1; size < 200; ++size) {
        std::istringstream lines(told({failed(std::string(size, 'c'))}));
        std::string line;
        std::getline(lines, line);
        EXPECT_LE(line.size(), 80U) << line;
        EXPECT_NE(line.find("not-found"), std::string::npos) << line;
    }
}

TEST(ReportTest, LeavesOutNoneOfManyTargets)
{
    const std::string targets = "card1,card3,card5,card7,card9,card11,card13,card15,card17,card19,card21,card23,card25";
    EXPECT_EQ(told({failed(targets)}),
              "error: not-found while looking for the card\n  " + targets + "\n  " + longHint + "\n");
}

TEST(ReportTest, CountsOnlyWhereThereIsSomethingToCount)
{
    Result well;
    well.target = "card2";
    EXPECT_EQ(told({well, well}), "");
    EXPECT_EQ(told({failed("card1", "busy"), well}),
              "error: card1: not-found while looking for the card: busy\n1 ok, 1 not found\n");
    EXPECT_EQ(told({failed("card1", "busy"), well}, true),
              "error: card1: not-found while looking for the card: busy\n");
}

TEST(ReportTest, LetsACardsTextAddNoLine)
{
    EXPECT_EQ(told({failed("card1", "a\nb")}), "error: card1: not-found while looking for the card: a\\x0ab\n");
}

} // namespace
