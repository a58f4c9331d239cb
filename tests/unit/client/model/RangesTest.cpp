// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Ranges.h"

#include "client/model/Failure.h"

#include <gtest/gtest.h>

namespace
{

using Names = std::vector<std::string>;

TEST(ExpandRangesTest, LeavesAPlainNameAlone)
{
    EXPECT_EQ(expandRanges("card-7.b"), (Names{"card-7.b"}));
}

TEST(ExpandRangesTest, KeepsTheWidthOfTheFirstNumber)
{
    EXPECT_EQ(expandRanges("card[08-11]"), (Names{"card08", "card09", "card10", "card11"}));
    EXPECT_EQ(expandRanges("card[8-11]"), (Names{"card8", "card9", "card10", "card11"}));
}

TEST(ExpandRangesTest, TakesLists)
{
    EXPECT_EQ(expandRanges("c[1,3-4]x"), (Names{"c1x", "c3x", "c4x"}));
}

TEST(ExpandRangesTest, MultipliesSeveralBrackets)
{
    EXPECT_EQ(expandRanges("r[1-2]c[1-2]"), (Names{"r1c1", "r1c2", "r2c1", "r2c2"}));
}

TEST(ExpandRangesTest, RefusesWhatIsNoRange)
{
    for (const char* text : {"c[", "c]", "c[]", "c[a-b]", "c[2-1]", "c[1-]", "c[-1]", "c[1-9999999]", "c[1,]",
                             "c[99999999999999999999]", "c[1-4000]d[1-4000]"}) {
        EXPECT_THROW((void)expandRanges(text), Failure) << text;
    }
}

TEST(FoldRangesTest, PutsNeighboursTogether)
{
    EXPECT_EQ(foldRanges({"card01", "card02", "card03", "card07"}), "card[01-03],card07");
}

TEST(FoldRangesTest, KeepsAddressesApart)
{
    EXPECT_EQ(foldRanges({"10.0.0.11", "10.0.0.12"}), "10.0.0.11,10.0.0.12");
}

TEST(FoldRangesTest, KeepsOtherWidthsApart)
{
    EXPECT_EQ(foldRanges({"card09", "card010"}), "card09,card010");
    EXPECT_EQ(foldRanges({"card9", "card10"}), "card[9-10]");
}

TEST(FoldRangesTest, IsUndoneByExpanding)
{
    const Names names = {"card08", "card09", "card10", "card11"};
    EXPECT_EQ(expandRanges(foldRanges(names)), names);
}

} // namespace
