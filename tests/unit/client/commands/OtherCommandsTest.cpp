// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

#include <cerrno>

namespace
{

using DiscoverCommandTest = ProgramFixture;
using StatusCommandTest = ProgramFixture;
using RawCommandTest = ProgramFixture;
using DecodeCommandTest = ProgramFixture;
using CompletionCommandTest = ProgramFixture;

TEST_F(DiscoverCommandTest, PrintsWhoAnswers)
{
    EXPECT_EQ(run({"discover", "--expect", "1"}), 0);
    EXPECT_EQ(out, "TARGET           INTERFACE  REACHABLE\n"
                   "127.0.0.1        lo         no\n");
    EXPECT_TRUE(errHas("its address is outside the network of this interface"));
}

TEST_F(DiscoverCommandTest, AsksForNames)
{
    EXPECT_EQ(run({"-o", "jsonl", "discover", "--expect", "1", "--names", "card1"}), 0);
    EXPECT_TRUE(outHas("\"name\":\"card1\"") || outHas("\"name\": \"card1\""));
}

TEST_F(DiscoverCommandTest, TellsThatTooFewAnswered)
{
    EXPECT_EQ(run({"discover", "--expect", "2"}), 9);
    EXPECT_TRUE(errHas("1 addresses were heard, 2 expected"));
}

TEST_F(DiscoverCommandTest, CountsNamesAndListsThoseThatDidNotAnswer)
{
    EXPECT_EQ(run({"-o", "csv", "--timeout", "3", "discover", "--expect", "2", "--names", "card[1-3]"}), 9);
    EXPECT_EQ(out, "ok,code,category,changed,target,interface,reachable,name\n"
                   "yes,0,,no,127.0.0.1,lo,no,card1\n"
                   "no,9,too-few,no,,,,card2\n"
                   "no,9,too-few,no,,,,card3\n");
    EXPECT_TRUE(errHas("1 names answered, 2 expected; these did not: card[2-3]"));
}

TEST_F(DiscoverCommandTest, EndsWithoutProbesWhenEnoughNamesAnswered)
{
    EXPECT_EQ(run({"--timeout", "60", "discover", "--expect", "1", "--names", "card[1-3]"}), 0);
    EXPECT_TRUE(card.texts(probe).empty());
}

TEST_F(DiscoverCommandTest, TellsWhichNamesAreSilentIfNoneIsExpected)
{
    EXPECT_EQ(run({"--timeout", "3", "discover", "--names", "card[1-4]", "--exclude", "card3"}), 0);
    EXPECT_TRUE(errHas("these names did not answer: card2,card4\n"));
}

TEST_F(DiscoverCommandTest, ExpectsNamesOnlyThatCanAnswer)
{
    EXPECT_EQ(run({"discover", "--expect", "2", "--names", "card1"}), 2);
    EXPECT_EQ(run({"discover", "--names", "card{1,2}"}), 2);
    EXPECT_EQ(run({"discover", "--names", "127.0.0.1"}), 2);
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(DiscoverCommandTest, ExcludesNamesOnly)
{
    EXPECT_EQ(run({"discover", "--exclude", "127.0.0.1"}), 2);
    EXPECT_TRUE(errHas("--exclude takes names of --names away"));
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(DiscoverCommandTest, TellsThatNobodyAnswered)
{
    card.answer(ipGet, {.hangsUp = true});
    EXPECT_EQ(run({"discover"}), 5);
    EXPECT_TRUE(errHas("no card answered"));
    EXPECT_TRUE(errHas("from port 50003, some"));
}

TEST_F(DiscoverCommandTest, ShowsItsProbesInADryRun)
{
    EXPECT_EQ(run({"--dry-run", "discover"}), 0);
    EXPECT_TRUE(outHas("81c39aff 01000504 f07f0001"));
    EXPECT_TRUE(outHas("81c39aff 01000504 03000001"));
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(StatusCommandTest, TellsACardThatIsUp)
{
    EXPECT_EQ(run({"-o", "json", "status", "card1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"up and idle\""));
}

TEST_F(StatusCommandTest, TellsACardThatDoesNotAnswer)
{
    card.answer(versions, {.hangsUp = true});
    EXPECT_EQ(run({"status", "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("busy"));
}

TEST_F(StatusCommandTest, TellsACardThatIsNotFound)
{
    EXPECT_EQ(run({"--timeout", "0.05", "status", "card2"}), 5);
    EXPECT_TRUE(outHas("not found"));
}

TEST_F(StatusCommandTest, TellsADaemonThatIsDown)
{
    EXPECT_EQ(run({"status", "127.0.0.1:1"}), 6);
    EXPECT_TRUE(outHas("daemon down"));
}

TEST_F(StatusCommandTest, TellsNothingOfACardWhereThisMachineCannotAsk)
{
    failAlways("connect", ENETUNREACH);
    EXPECT_EQ(run({"-o", "json", "status", "127.0.0.1"}), 6);
    EXPECT_TRUE(outHas("\"category\": \"no-network\""));
    EXPECT_TRUE(outHas("\"state\": null"));
    EXPECT_TRUE(errHas("this machine has no way to the card"));
}

TEST_F(StatusCommandTest, TellsAStrangeOne)
{
    card.answer(versions, {.status = 4});
    EXPECT_EQ(run({"status", "127.0.0.1"}), 4);
    EXPECT_TRUE(outHas("strange"));
}

TEST_F(RawCommandTest, SendsATextAndShowsTheReply)
{
    card.answer(66, {.text = "<Good/>", .status = 6});
    EXPECT_EQ(run({"-o", "json", "raw", "--command", "66", "--text", "<Hello/>", "127.0.0.1"}), 4);
    EXPECT_EQ(card.texts(66), Texts{"<Hello/>"});
    EXPECT_TRUE(outHas("\"status\": 6"));
    EXPECT_TRUE(outHas("\"text\": \"<Good/>\""));
}

TEST_F(RawCommandTest, WaitsForTheAnswerAsEveryCommandThatSaysNoMoreOfWhatItDoes)
{
    card.answer(66, {.status = 6});
    EXPECT_EQ(run({"-o", "json", "raw", "--command", "66", "127.0.0.1"}), 4);
    EXPECT_TRUE(outHas("\"phase\": \"waiting for the answer\""));
}

// It may be what tells that something is wrong with the probe.
TEST_F(RawCommandTest, AsksNobodyElseBeforeIt)
{
    card.answer(timeSet, done);
    EXPECT_EQ(run({"raw", "--command", "17", "127.0.0.1"}), 0);
    EXPECT_TRUE(card.texts(probe).empty());
    EXPECT_EQ(card.requests().size(), 1U);
}

TEST_F(RawCommandTest, SendsByBroadcast)
{
    card.answer(66, done);
    EXPECT_EQ(run({"-o", "json", "raw", "--udp", "--command", "66", "card1"}), 0);
    EXPECT_TRUE(outHas("\"text\": null"));
    EXPECT_EQ(run({"--timeout", "0.05", "raw", "--udp", "--command", "67", "card1"}), 5);
    EXPECT_TRUE(errHas("no card answered in time"));
}

TEST_F(RawCommandTest, RepeatsNothingWhateverRetriesSays)
{
    card.answer(versions, {.hangsUp = true});
    EXPECT_EQ(run({"--retries", "2", "raw", "--command", "1", "127.0.0.1"}), 5);
    EXPECT_EQ(card.texts(versions).size(), 1U);
}

TEST_F(RawCommandTest, ChangesNothingWhereNoConnectionIsTaken)
{
    EXPECT_EQ(run({"-o", "json", "raw", "--command", "9", "127.0.0.1:1"}), 6);
    EXPECT_TRUE(outHas("\"changed\": false"));
    card.answer(9, {.hangsUp = true});
    EXPECT_EQ(run({"-o", "json", "raw", "--command", "9", "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("\"changed\": null"));
}

TEST_F(RawCommandTest, SaysOfNoAddressWhereItIsFromThatItDoesNotUse)
{
    sandbox.write("/tmp/groups", "card1 127.0.0.1\n");
    card.answer(66, done);
    const std::vector<std::string> words = {
        "--groups", sandbox.path("/tmp/groups"), "-o", "json", "raw", "--command", "66", "card1"};
    EXPECT_EQ(run(words), 0);
    EXPECT_TRUE(outHas("\"address_from\": \"groups\""));
    std::vector<std::string> broadcast = words;
    broadcast.emplace_back("--udp");
    EXPECT_EQ(run(broadcast), 0);
    EXPECT_FALSE(outHas("address_from"));
}

TEST_F(RawCommandTest, SendsAFileAsItIs)
{
    sandbox.write("/tmp/payload", std::string("\4\0\0\0abc\0", 8));
    card.answer(66, {.bytes = "wrong"});
    EXPECT_EQ(run({"raw", "--command", "66", "--format", "1", "--payload", "/tmp/payload", "127.0.0.1"}), 0);
    EXPECT_EQ(card.texts(66), Texts{"abc"});
    EXPECT_TRUE(outHas("77726f6e 67"));
}

TEST_F(RawCommandTest, RefusesWhatMakesNoSense)
{
    EXPECT_EQ(run({"raw", "--command", "70000", "127.0.0.1"}), 2);
    EXPECT_TRUE(errHas("--command is from 0 to 65535"));
    EXPECT_EQ(run({"raw", "--command", "1", "--text", "a", "--text-file", "b", "127.0.0.1"}), 2);
    EXPECT_EQ(run({"raw", "--udp", "--command", "1", "card1", "card2"}), 2);
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(RawCommandTest, TakesNoNetworkNorDoesAnyChange)
{
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"time", "set", "--ntp", "10.0.0.5", "127.0.0.0/30"},
          {"raw", "--command", "17", "127.0.0.0/30"}}) {
        EXPECT_EQ(run(words), 2);
        EXPECT_TRUE(errHas("127.0.0.0/30 is a network"));
    }
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(DecodeCommandTest, TellsWhatIsInAMessage)
{
    EXPECT_EQ(run({"decode", "81c39aff01000504010000010700000000000000"}), 0);
    EXPECT_TRUE(outHas("command"));
}

TEST_F(DecodeCommandTest, TellsWhatIsInSeveralMessagesOfAFile)
{
    const std::string header = "81c39aff 01000504 01000001 07000000 00000000\n";
    sandbox.write("/tmp/frames", header + header);
    EXPECT_EQ(run({"decode", "--file", "/tmp/frames"}), 0);
    EXPECT_TRUE(outHas("message 2"));
}

TEST_F(DecodeCommandTest, ReadsBytesAndSplitsATextOfSeveralLines)
{
    std::string message("\x81\xc3\x9a\xff\1\1\5\4\1\x80\1\1\7\0\0\0\x08\0\0\0\4\0\0\0a\nb\0", 28);
    sandbox.write("/tmp/frame", message);
    EXPECT_EQ(run({"decode", "--binary", "--file", "/tmp/frame"}), 0);
    EXPECT_TRUE(outHas(" a"));
    EXPECT_TRUE(outHas(" b"));
}

TEST_F(DecodeCommandTest, RefusesWhatIsNoHexadecimal)
{
    EXPECT_EQ(run({"decode", "xyz"}), 2);
    sandbox.write("/tmp/frames", "xyz");
    EXPECT_EQ(run({"decode", "--file", "/tmp/frames"}), 10);
    EXPECT_EQ(run({"decode", "--binary", "00"}), 2);
    EXPECT_TRUE(errHas("give either HEX or a file"));
}

TEST_F(CompletionCommandTest, PrintsAScriptForEachShell)
{
    for (const std::string name : {"bash", "zsh", "fish"}) {
        EXPECT_EQ(run({"completion", name}), 0);
        EXPECT_TRUE(outHas("firmware")) << name;
    }
    EXPECT_EQ(run({"completion", "tcsh"}), 2);
}

} // namespace
