// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

namespace
{

using VersionsCommandTest = ProgramFixture;

TEST_F(VersionsCommandTest, FindsTheCardByItsNameAndPrintsItsVersions)
{
    EXPECT_EQ(run({"versions", "card1"}), 0);
    EXPECT_EQ(out, "TARGET  COMPONENT  VERSION\n"
                   "card1   kernel     KERN-6.1.0\n");
    EXPECT_EQ(err, "");
    EXPECT_EQ(card.texts(ipGet), Texts{"<IpConfiguration From=\"tarvelctl\" To=\"card1\"/>"});
}

TEST_F(VersionsCommandTest, AsksAnAddressWithoutABroadcast)
{
    EXPECT_EQ(run({"-o", "csv", "versions", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("KERN-6.1.0"));
    EXPECT_TRUE(card.texts(ipGet).empty());
}

TEST_F(VersionsCommandTest, AsksAnotherPortThatIsGiven)
{
    EXPECT_EQ(run({"versions", "127.0.0.1:" + std::to_string(card.port())}), 0);
    EXPECT_TRUE(outHas("KERN-6.1.0"));
}

TEST_F(VersionsCommandTest, LocatesACardThatRefusesToTellItsConfiguration)
{
    card.answer(ipGet, {.status = refused});
    EXPECT_EQ(run({"versions", "card1"}), 0);
    EXPECT_TRUE(outHas("KERN-6.1.0"));
}

TEST_F(VersionsCommandTest, TellsThatNobodyAnswers)
{
    EXPECT_EQ(run({"--timeout", "0.05", "versions", "card2"}), 5);
    EXPECT_TRUE(errHas("error: card2: not-found while looking for the card\n  nobody answered by this name"));
}

TEST_F(VersionsCommandTest, PrintsTheAnswerOfOneAndTellsTheFailureOfAnother)
{
    EXPECT_EQ(run({"versions", "127.0.0.1", "127.0.0.1:1"}), 8);
    EXPECT_TRUE(outHas("KERN-6.1.0"));
    EXPECT_TRUE(errHas("error: 127.0.0.1:1: refused while connecting"));
    EXPECT_TRUE(err.ends_with("\n1 ok, 1 refused\n"));
}

TEST_F(VersionsCommandTest, AsksAllHostsOfANetworkButThoseThatAreExcluded)
{
    EXPECT_EQ(run({"-o", "csv", "versions", "127.0.0.0/30", "--exclude", "127.0.0.2"}), 0);
    EXPECT_TRUE(outHas("127.0.0.1,yes"));
    EXPECT_FALSE(outHas("127.0.0.2,"));
    EXPECT_EQ(run({"versions", "card1", "--exclude", "card2"}), 2);
    EXPECT_TRUE(errHas("--exclude card2 takes none of the targets away"));
}

TEST_F(VersionsCommandTest, FoldsFailures)
{
    EXPECT_EQ(run({"--timeout", "0.05", "--fold", "versions", "card[2-101]"}), 5);
    EXPECT_TRUE(errHas("error: card[2-101]: not-found while looking for the card\n"));
    EXPECT_TRUE(err.ends_with("\n0 ok, 100 not found\n"));
    EXPECT_LT(err.size(), 1000U);
}

TEST_F(VersionsCommandTest, TellsThatTheCardRefuses)
{
    card.answer(versions, {.status = refused});
    EXPECT_EQ(run({"versions", "127.0.0.1"}), 3);
    EXPECT_TRUE(errHas("while waiting for the versions report"));
}

TEST_F(VersionsCommandTest, AsksAgainWhenTheCardHangsUp)
{
    int calls = 0;
    card.behave(versions, [&](const FakeCard::Request&) {
        return ++calls < 3 ? FakeCard::Answer{.hangsUp = true} : says(versionsXml("KERN-1"));
    });
    EXPECT_EQ(run({"versions", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("KERN-1"));
    EXPECT_EQ(calls, 3);
}

TEST_F(VersionsCommandTest, GivesUpWhenTheCardHangsUpEachTime)
{
    card.answer(versions, {.hangsUp = true});
    EXPECT_EQ(run({"--retries", "1", "versions", "127.0.0.1"}), 5);
    EXPECT_EQ(card.texts(versions).size(), 2U);
    EXPECT_TRUE(errHas("the card closed the connection without an answer"));
}

TEST_F(VersionsCommandTest, TellsGarbageFromAnAnswer)
{
    card.answer(versions, {.startPattern = 0x99});
    EXPECT_EQ(run({"--retries", "0", "versions", "127.0.0.1"}), 4);
}

TEST_F(VersionsCommandTest, TellsThatAMalformedAnswerWasReadByItsForm)
{
    card.answer(versions, says(versionsXml("a<b")));
    EXPECT_EQ(run({"versions", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("a<b"));
    EXPECT_TRUE(errHas("warning: 127.0.0.1: the card's answer is no valid XML; it was read by its form"));
}

TEST_F(VersionsCommandTest, ComparesWithAFile)
{
    sandbox.write("/tmp/expected", "kernel KERN-7\n");
    EXPECT_EQ(run({"versions", "--expect", "/tmp/expected", "127.0.0.1"}), 9);
    EXPECT_TRUE(errHas("not as expected: kernel"));
    sandbox.write("/tmp/expected", "kernel KERN-6.1.0\n");
    EXPECT_EQ(run({"versions", "--expect", "/tmp/expected", "127.0.0.1"}), 0);
}

TEST_F(VersionsCommandTest, NeedsTwoCardsToTellADifference)
{
    EXPECT_EQ(run({"versions", "--diff", "card1"}), 2);
    EXPECT_TRUE(errHas("--diff compares cards: give at least two"));
}

TEST_F(VersionsCommandTest, TellsTheDifferenceOfTwoCards)
{
    const std::string another = "127.0.0.1:" + std::to_string(card.port());
    int calls = 0;
    card.behave(versions, [&](const FakeCard::Request&) { return says(versionsXml(++calls == 1 ? "A" : "B")); });
    EXPECT_EQ(run({"--parallel", "1", "versions", "--diff", "127.0.0.1", another}), 9);
    EXPECT_TRUE(errHas("the cards differ in kernel"));
}

TEST_F(VersionsCommandTest, FoldsCardsThatAreTheSame)
{
    EXPECT_EQ(run({"--fold", "versions", "127.0.0.1", "127.0.0.1:50003"}), 0);
    EXPECT_EQ(out.find("KERN-6.1.0"), out.rfind("KERN-6.1.0"));
}

TEST_F(VersionsCommandTest, SendsNothingInADryRun)
{
    EXPECT_EQ(run({"--dry-run", "versions", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("81c39aff 01000504 01000001"));
    EXPECT_TRUE(errHas("dry run: this request was not sent"));
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(VersionsCommandTest, ShowsTheFramesWhenVerbose)
{
    EXPECT_EQ(run({"-v", "versions", "127.0.0.1"}), 0);
    EXPECT_TRUE(errHas("127.0.0.1 <- 20 bytes: 81c39aff 01000504 01000001"));
    EXPECT_TRUE(errHas("127.0.0.1 -> "));
}

TEST_F(VersionsCommandTest, TellsWhereAnAddressIsFrom)
{
    sandbox.write("/tmp/groups", "noted 127.0.0.1\n");
    EXPECT_EQ(run({"--groups", sandbox.path("/tmp/groups"), "-o", "csv", "--columns", "target,address_from", "--fold",
                   "versions", "card1", "noted", "127.0.0.1"}),
              0);
    EXPECT_TRUE(outHas("card1,lookup\n"));
    EXPECT_TRUE(outHas("noted,groups\n"));
    EXPECT_TRUE(outHas("127.0.0.1,\n"));
    EXPECT_EQ(run({"versions", "card1"}), 0);
    EXPECT_FALSE(outHas("ADDRESS FROM")); // too much for a terminal
}

} // namespace
