// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

#include "client/cli/LocalFile.h"

namespace
{

class MetricsCommandTest : public ProgramFixture
{
protected:
    MetricsCommandTest() { card.answer(timeGet, says(timeXml("Ntp", "10.0.0.1", "2026-03-04T05:06:07"))); }

    int runWithGroups(const std::string& text, std::vector<std::string> words)
    {
        sandbox.write("/tmp/groups", text);
        words.insert(words.begin(), {"--groups", sandbox.path("/tmp/groups")});
        return run(words);
    }
    [[nodiscard]] std::string file() const { return sandbox.path("/tmp/cards.prom"); }
};

TEST_F(MetricsCommandTest, PrintsWhatACardTells)
{
    EXPECT_EQ(run({"metrics", "127.0.0.1"}), 0);
    EXPECT_TRUE(out.starts_with("# HELP tarvel_up ")) << out;
    EXPECT_TRUE(outHas("\ntarvel_up{card=\"127.0.0.1\"} 1\n"));
    EXPECT_TRUE(outHas(",version=\"KERN-6.1.0\"} 1\n"));
    EXPECT_TRUE(outHas("\ntarvel_clock_skew_seconds{card=\"127.0.0.1\"} -"));
    EXPECT_EQ(err, "");
}

TEST_F(MetricsCommandTest, WritesAFileAndEndsAsOtherCommandsDo)
{
    EXPECT_EQ(run({"metrics", "127.0.0.1", "127.0.0.1:1", "--output", file()}), 8);
    EXPECT_EQ(out, "");
    const std::string text = readLocalFile(file());
    EXPECT_NE(text.find("\ntarvel_up{card=\"127.0.0.1\"} 1\ntarvel_up{card=\"127.0.0.1:1\"} 0\n"), std::string::npos);
    EXPECT_NE(text.find("category=\"refused\"} 1\n"), std::string::npos);
}

TEST_F(MetricsCommandTest, AsksForNoNameByBroadcast)
{
    EXPECT_EQ(run({"metrics", "card1"}), 6);
    EXPECT_TRUE(card.requests().empty());
    EXPECT_TRUE(outHas("tarvel_up{card=\"card1\"} 0\n"));
    EXPECT_TRUE(outHas("{card=\"card1\",address=\"\",category=\"no-address\"} 1\n"));
    EXPECT_TRUE(errHas("write this line there: card1 ADDRESS")) << err;
}

TEST_F(MetricsCommandTest, CallsACardByItsNameInTheGroupsFile)
{
    EXPECT_EQ(runWithGroups("card1 127.0.0.1\n", {"metrics", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("tarvel_card_info{card=\"card1\",address=\"127.0.0.1\"} 1\n")) << out;
}

TEST_F(MetricsCommandTest, AsksACardOnceThatIsGivenTwice)
{
    EXPECT_EQ(runWithGroups("card1 127.0.0.1\n", {"metrics", "127.0.0.1", "card1"}), 0);
    EXPECT_EQ(card.texts(versions).size(), 1U);
    EXPECT_EQ(out.find("tarvel_up{card=\"card1\"}"), out.rfind("tarvel_up{card=\"card1\"}"));
    EXPECT_TRUE(errHas("warning: card1 is 127.0.0.1: one card, asked once")) << err;
}

TEST_F(MetricsCommandTest, TellsWhichOfSeveralNamesIsMeant)
{
    EXPECT_EQ(runWithGroups("card1 127.0.0.1\ncard2 127.0.0.1\n", {"metrics", "127.0.0.1"}), 0);
    EXPECT_TRUE(errHas("card1 is meant")) << err;
}

TEST_F(MetricsCommandTest, LeavesAFileAloneInADryRun)
{
    EXPECT_EQ(run({"--dry-run", "metrics", "127.0.0.1", "--output", file()}), 0);
    EXPECT_TRUE(card.requests().empty());
    EXPECT_FALSE(sandbox.exists("/tmp/cards.prom"));
    EXPECT_TRUE(outHas("81c39aff"));
}

TEST_F(MetricsCommandTest, TellsTheSameAsJson)
{
    for (const std::vector<std::string>& words : {std::vector<std::string>{"-o", "json", "metrics", "127.0.0.1"},
                                                  {"metrics", "--output", "json", "127.0.0.1"}}) {
        EXPECT_EQ(run(words), 0);
        EXPECT_TRUE(outHas("\"command\": \"metrics\"")) << out;
        EXPECT_TRUE(outHas("\"version\": \"KERN-6.1.0\""));
        EXPECT_TRUE(outHas("\"skew\": -"));
    }
}

TEST_F(MetricsCommandTest, RefusesOptionsThatADocumentHasNoUseFor)
{
    EXPECT_EQ(run({"--fold", "metrics", "127.0.0.1"}), 2);
    EXPECT_EQ(run({"--columns", "card", "metrics", "127.0.0.1"}), 2);
    EXPECT_EQ(run({"-o", "csv", "metrics", "--output", file(), "127.0.0.1"}), 2);
    EXPECT_EQ(run({"metrics", "--output", "", "127.0.0.1"}), 2);
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(MetricsCommandTest, TakesAFileThatIsCalledLikeAFormatForNoneWhenTheCommandLineIsBroken)
{
    EXPECT_EQ(run({"metrics", "--output", "json.prom"}), 2);
    EXPECT_EQ(out, "");
    EXPECT_EQ(run({"metrics", "--output", "json"}), 2);
    EXPECT_TRUE(outHas("\"category\": \"usage\""));
}

TEST_F(MetricsCommandTest, NamesAFileThatCannotBeWritten)
{
    EXPECT_EQ(run({"metrics", "--output", sandbox.path("/tmp/none/cards.prom"), "127.0.0.1"}), 10);
    EXPECT_TRUE(errHas("cannot write ")) << err;
}

} // namespace
