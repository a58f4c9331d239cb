// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Lines.h"

#include "client/output/Fold.h"

#include <gtest/gtest.h>

namespace
{

Result card(const std::string& target, const std::string& version)
{
    Result result;
    result.target = target;
    result.listName = "components";
    result.list = {{{"component", "kernel"}, {"version", version}}};
    return result;
}

std::vector<Row> linesOf(const Result& result)
{
    std::vector<Row> lines;
    eachLine(result, [&](const Row& line) { lines.push_back(line); });
    return lines;
}

TEST(LinesTest, RepeatTheTargetForEachRowOfTheList)
{
    Result result = card("card1", "6.1");
    result.list.push_back({{"component", "base"}, {"version", "1"}});
    const std::vector<Row> lines = linesOf(result);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(cellOf(lines[1], "target"), Cell("card1"));
    EXPECT_EQ(cellOf(lines[1], "component"), Cell("base"));
    EXPECT_EQ(cellOf(lines[1], "version"), Cell("1"));
}

TEST(LinesTest, OfALongListAreThoseOfAKeptOne)
{
    const Result kept = card("card1", "6.1");
    Result made = kept;
    made.list.clear();
    made.longList = [&](const RowVisitor& visit) { visit(kept.list.front()); };
    EXPECT_EQ(linesOf(made), linesOf(kept));
}

TEST(LinesTest, OfAFailureWithoutDataHaveItsOutcome)
{
    Result result;
    result.target = "card1";
    result.changed = std::nullopt;
    result.fail({ExitCode::noAnswer, Category::timeout, "waiting", "why"});
    EXPECT_EQ(linesOf(result), (std::vector<Row>{{{"target", "card1"},
                                                  {"ok", false},
                                                  {"code", std::int64_t{5}},
                                                  {"category", "timeout"},
                                                  {"changed", Cell()},
                                                  {"phase", "waiting"},
                                                  {"hint", "why"}}}));
}

TEST(LinesTest, LackOtherColumns)
{
    EXPECT_EQ(cellOf({{"a", "1"}}, "b"), Cell());
}

TEST(CellTextTest, IsWrittenForPeople)
{
    EXPECT_EQ(textOf(Cell()), "");
    EXPECT_EQ(textOf(Cell(true)), "yes");
    EXPECT_EQ(textOf(Cell(std::int64_t{7})), "7");
    EXPECT_EQ(textOf(Cell(0.25)), "0.250");
}

TEST(FoldTest, PutsTargetsWithTheSameAnswerTogether)
{
    const std::vector<Result> folded = fold({card("card1", "6.1"), card("card2", "6.2"), card("card3", "6.1")});
    ASSERT_EQ(folded.size(), 2);
    EXPECT_EQ(folded[0].target, "card1,card3");
    EXPECT_EQ(folded[1].target, "card2");
}

TEST(FoldTest, KeepsLongListsApart)
{
    Result one = card("card1", "6.1");
    one.longList = [](const RowVisitor& /*visit*/) {};
    Result other = one;
    other.target = "card2";
    EXPECT_EQ(fold({one, other}).size(), 2);
}

TEST(FoldTest, TakesMeasuredValuesForNoDifference)
{
    Result one = card("card1", "6.1");
    Result other = card("card2", "6.1");
    one.add("seconds", 0.1);
    other.add("seconds", 0.2);
    const std::vector<Result> folded = fold({one, other});
    ASSERT_EQ(folded.size(), 1);
    EXPECT_EQ(folded[0].fields, (Row{{"seconds", Cell()}}));
}

TEST(FoldTest, KeepsApartWhatWasChangedAndWhatWasNot)
{
    Result one = card("card1", "6.1");
    one.changed = true;
    EXPECT_EQ(fold({one, card("card2", "6.1")}).size(), 2);
}

TEST(CommonCodeTest, IsThatOfAllOrMixed)
{
    Result failed;
    failed.code = ExitCode::noAnswer;
    EXPECT_EQ(commonCode({}), ExitCode::ok);
    EXPECT_EQ(commonCode({card("a", "1"), card("b", "1")}), ExitCode::ok);
    EXPECT_EQ(commonCode({failed, failed}), ExitCode::noAnswer);
    EXPECT_EQ(commonCode({card("a", "1"), failed}), ExitCode::mixed);
}

} // namespace
