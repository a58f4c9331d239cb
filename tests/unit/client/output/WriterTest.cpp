// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Writer.h"

#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

const std::vector<Column> timeColumns = {{"server"}, {"skew"}};

Result timeOf(const std::string& name, const std::string& server)
{
    Result result;
    result.target = name;
    result.add("server", server);
    result.add("skew", -0.25);
    return result;
}

Result silentCard()
{
    Result result;
    result.target = "card2";
    result.fail({ExitCode::noAnswer, Category::timeout, "waiting", "nobody answered"});
    return result;
}

std::string printed(const std::string& format, const std::vector<Result>& results,
                    const std::vector<std::string>& columns = {}, const std::vector<Column>& ofCommand = timeColumns)
{
    testing::internal::CaptureStdout();
    const std::unique_ptr<Writer> writer = makeWriter(format, columns);
    writer->begin("time get", ofCommand);
    for (const Result& result : results) {
        writer->add(result);
    }
    writer->end(ExitCode::ok);
    return testing::internal::GetCapturedStdout();
}

TEST(CsvTest, HasARowForAFailure)
{
    EXPECT_EQ(printed("csv", {timeOf("card1", "10.0.0.5"), silentCard()}),
              "target,ok,code,category,changed,server,skew\n"
              "card1,yes,0,,no,10.0.0.5,-0.250\n"
              "card2,no,5,timeout,no,,\n");
}

TEST(CsvTest, HasItsHeadingWithoutAResult)
{
    EXPECT_EQ(printed("csv", {}), "target,ok,code,category,changed,server,skew\n");
}

TEST(CsvTest, LeavesOutWhatNobodyKnows)
{
    Result result = silentCard();
    result.changed = std::nullopt;
    EXPECT_EQ(printed("csv", {result}, {"changed", "target"}), "changed,target\n,card2\n");
}

TEST(CsvTest, QuotesAsTextWhatASpreadsheetWouldRun)
{
    for (const std::string formula : {"=1+1", "@sum", "+1", "-1"}) {
        EXPECT_EQ(printed("csv", {timeOf("card1", formula)}, {"server"}), "server\n'" + formula + "\n");
    }
    EXPECT_EQ(printed("csv", {timeOf("card1", "=a,\"b\"")}, {"server"}), "server\n\"'=a,\"\"b\"\"\"\n");
    EXPECT_EQ(printed("csv", {timeOf("card1", "a=1")}, {"server"}), "server\na=1\n");
}

TEST(CsvTest, LeavesNumbersAsTheyAre)
{
    EXPECT_EQ(printed("csv", {timeOf("card1", "a")}, {"skew"}), "skew\n-0.250\n");
}

TEST(TableTest, HasItsHeadingWithoutAResult)
{
    EXPECT_EQ(printed("table", {}), "TARGET  SERVER  SKEW\n");
    EXPECT_EQ(printed("table", {}, {}, {{"target", 8}, {"reachable"}}), "TARGET    REACHABLE\n");
}

TEST(TableTest, HasNoRowForAFailureWithoutData)
{
    EXPECT_EQ(printed("table", {silentCard(), timeOf("card1", "10.0.0.5")}), "TARGET  SERVER    SKEW\n"
                                                                             "card1   10.0.0.5  -0.250\n");
}

TEST(TableTest, HasOneIfItsOutcomeIsAskedFor)
{
    EXPECT_EQ(printed("table", {silentCard()}, {"target", "category"}), "TARGET  CATEGORY\ncard2   timeout\n");
}

TEST(TableTest, NeedsNoTargetsForWhatIsAboutNoCard)
{
    EXPECT_EQ(printed("table", {timeOf("", "a")}), "SERVER  SKEW\na       -0.250\n");
}

Result listOf(const std::vector<std::string>& paths)
{
    Result result;
    result.target = "a.tgz";
    result.listName = "members";
    result.longList = [paths](const RowVisitor& visit) {
        for (const std::string& path : paths) {
            visit({{"path", path}});
        }
    };
    return result;
}

TEST(TableTest, IsAsWideAsTheWidestRowOfALongList)
{
    EXPECT_EQ(printed("table", {listOf({"a", "long"})}, {}, {{"path"}, {"size"}}), "TARGET  PATH  SIZE\n"
                                                                                   "a.tgz   a\n"
                                                                                   "a.tgz   long\n");
}

TEST(TableTest, IsAsWideAsItsWidestCellIsOnATerminal)
{
    EXPECT_EQ(printed("table", {timeOf("a", "z\u00fcrich"), timeOf("b", "\u4e2d\u6587\u4e2d\u6587")}),
              "TARGET  SERVER    SKEW\n"
              "a       z\u00fcrich    -0.250\n"
              "b       \u4e2d\u6587\u4e2d\u6587  -0.250\n");
}

TEST(JsonTest, HasALongListElementByElement)
{
    const std::string head = R"({
  "schema": 2,
  "command": "time get",
  "ok": true,
  "code": 0,
  "results": [
    {
      "target": "a.tgz",
      "ok": true,
      "code": 0,
      "category": null,
      "phase": null,
      "hint": null,
      "changed": false,
      "members": [)";
    EXPECT_EQ(printed("json", {listOf({"a", "b\nc"})}), head + R"(
        {
          "path": "a"
        },
        {
          "path": "b\nc"
        }
      ]
    }
  ]
}
)");
    EXPECT_EQ(printed("json", {listOf({})}), head + "]\n    }\n  ]\n}\n");
}

TEST(JsonTest, SeparatesResults)
{
    const std::string text = printed("json", {timeOf("card1", "a"), listOf({}), timeOf("card2", "b")});
    EXPECT_NE(text.find("    },\n    {\n      \"target\": \"a.tgz\""), std::string::npos);
    EXPECT_NE(text.find("    },\n    {\n      \"target\": \"card2\""), std::string::npos);
    EXPECT_TRUE(printed("json", {}).ends_with("  \"results\": []\n}\n"));
}

TEST(JsonLinesTest, HaveALongListInTheLine)
{
    const std::string text = printed("jsonl", {listOf({"a", "b"}), listOf({})});
    EXPECT_NE(text.find("\"changed\":false,\"members\":[{\"path\":\"a\"},{\"path\":\"b\"}]}\n{"), std::string::npos);
    EXPECT_TRUE(text.ends_with("\"members\":[]}\n"));
}

TEST(JsonTest, TellsWhetherTheCardWasChanged)
{
    Result result = timeOf("card1", "a");
    EXPECT_NE(printed("json", {result}).find("\"changed\": false"), std::string::npos);
    result.changed = true;
    EXPECT_NE(printed("json", {result}).find("\"changed\": true"), std::string::npos);
    result.changed = std::nullopt;
    EXPECT_NE(printed("json", {result}).find("\"changed\": null"), std::string::npos);
}

TEST(ColumnsTest, AreThoseChosenInThatOrder)
{
    EXPECT_EQ(printed("csv", {timeOf("card1", "a")}, columnNames("skew,target,code")), "skew,target,code\n"
                                                                                       "-0.250,card1,0\n");
}

TEST(ColumnsTest, AreRefusedIfThereAreNone)
{
    const Failure failure = failureOf([] { printed("csv", {}, {"servers"}); });
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(failure.code, ExitCode::usage);
    EXPECT_EQ(failure.hint, "there is no column \"servers\"; the columns are target, ok, code, category, changed, "
                            "phase, hint, server, skew");
    EXPECT_THROW((void)makeWriter("jsonl", {"target"}), Failure);
}

// A card's component, and a text that no terminal should see as it is.
Result versionOf(const std::string& name)
{
    Result result;
    result.target = name;
    result.changed = std::nullopt;
    result.listName = "components";
    result.list = {{{"id", "kernel"}, {"version", "\x1b\u00e9"}}};
    return result;
}

TEST(JsonTest, IsOneDocument)
{
    EXPECT_EQ(printed("json", {versionOf("card1"), silentCard()}), R"({
  "schema": 2,
  "command": "time get",
  "ok": true,
  "code": 0,
  "results": [
    {
      "target": "card1",
      "ok": true,
      "code": 0,
      "category": null,
      "phase": null,
      "hint": null,
      "changed": null,
      "components": [
        {
          "id": "kernel",
          "version": "\u001b\u00e9"
        }
      ]
    },
    {
      "target": "card2",
      "ok": false,
      "code": 5,
      "category": "timeout",
      "phase": "waiting",
      "hint": "nobody answered",
      "changed": false
    }
  ]
}
)");
}

TEST(JsonLinesTest, AreADocumentForEachTarget)
{
    EXPECT_EQ(printed("jsonl", {timeOf("card1", "10.0.0.5"), silentCard()}),
              R"({"schema":2,"command":"time get","target":"card1","ok":true,"code":0,"category":null,"phase":null,)"
              R"("hint":null,"changed":false,"server":"10.0.0.5","skew":-0.25})"
              "\n"
              R"({"schema":2,"command":"time get","target":"card2","ok":false,"code":5,"category":"timeout",)"
              R"("phase":"waiting","hint":"nobody answered","changed":false})"
              "\n");
}

} // namespace
