// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"
#include "support/ErrorText.h"
#include "support/FakeInterface.h"

namespace
{

class TimeCommandsTest : public ProgramFixture
{
protected:
    TimeCommandsTest()
    {
        card.answer(timeGet, says(timeXml("Manual", "10.0.0.1", "2021-03-04T05:06:07")));
        // A card tells afterwards what it was told.
        card.behave(timeSet, [this](const FakeCard::Request& request) {
            card.answer(timeGet, says(request.text));
            return done;
        });
    }
};

TEST_F(TimeCommandsTest, GetPrintsTheTimeReference)
{
    EXPECT_EQ(run({"time", "get", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("TARGET     MODE    SERVER    TIME                  SKEW"));
    EXPECT_TRUE(outHas("127.0.0.1  Manual  10.0.0.1  2021-03-04T05:06:07Z  -"));
}

TEST_F(TimeCommandsTest, GetExplainsARefusal)
{
    card.answer(timeGet, {.status = refused});
    EXPECT_EQ(run({"time", "get", "127.0.0.1"}), 3);
    EXPECT_TRUE(errHas("its setting system.ntp.server is missing"));
}

TEST_F(TimeCommandsTest, SetGivesAServerAndReadsItBack)
{
    EXPECT_EQ(run({"time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 0);
    ASSERT_EQ(card.texts(timeSet).size(), 1U);
    EXPECT_NE(card.texts(timeSet).front().find("Mode=\"Ntp\" NtpServer=\"10.0.0.5\""), std::string::npos);
    EXPECT_TRUE(outHas("127.0.0.1  Ntp   10.0.0.5"));
    EXPECT_TRUE(errHas("the server is staged, not committed"));
}

TEST_F(TimeCommandsTest, SetDoesNothingThatIsDoneAlready)
{
    card.answer(timeGet, says(timeXml("Ntp", "10.0.0.5", "2021-03-04T05:06:07")));
    EXPECT_EQ(run({"time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 0);
    EXPECT_TRUE(errHas("the card takes its time from this server already"));
    EXPECT_TRUE(card.texts(timeSet).empty());
}

TEST_F(TimeCommandsTest, SetGivesATimeAndKeepsTheServer)
{
    EXPECT_EQ(run({"time", "set", "--manual", "2030-01-02T03:04:05", "127.0.0.1"}), 0);
    EXPECT_EQ(card.texts(timeSet), Texts{timeXml("Manual", "10.0.0.1", "2030-01-02T03:04:05")});
}

TEST_F(TimeCommandsTest, SetTellsThatTheModeWasNotTaken)
{
    card.answer(timeSet, done);
    EXPECT_EQ(run({"time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 7);
    EXPECT_TRUE(errHas("the card is in mode Manual, not Ntp"));
}

TEST_F(TimeCommandsTest, SetTellsThatTheServerWasNotTaken)
{
    card.behave(timeSet, [this](const FakeCard::Request&) {
        card.answer(timeGet, says(timeXml("Ntp", "10.0.0.9", "2021-03-04T05:06:07")));
        return done;
    });
    EXPECT_EQ(run({"time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 7);
    EXPECT_TRUE(errHas("the card has the server \"10.0.0.9\", not \"10.0.0.5\""));
}

TEST_F(TimeCommandsTest, SetTellsThatTheClockWasNotTaken)
{
    card.answer(timeSet, done);
    EXPECT_EQ(run({"time", "set", "--manual", "2021-03-04T05:07:07", "127.0.0.1"}), 7);
    EXPECT_TRUE(errHas("the card's clock is -60 s from what it was set to"));
}

TEST_F(TimeCommandsTest, SetIsNotRepeatedWhenTheCardHangsUp)
{
    card.answer(timeSet, {.hangsUp = true});
    EXPECT_EQ(run({"time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 7); // read back: not done
    EXPECT_EQ(card.texts(timeSet).size(), 1U);
}

TEST_F(TimeCommandsTest, SetChangesNothingOnACardThatTakesNoConnectionForIt)
{
    card.behave(timeGet, [this](const FakeCard::Request&) {
        card.refuseConnections();
        return says(timeXml("Manual", "10.0.0.1", "2021-03-04T05:06:07"));
    });
    EXPECT_EQ(run({"-o", "json", "time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 6);
    EXPECT_TRUE(outHas("\"changed\": false"));
}

TEST_F(TimeCommandsTest, SetDoesNotKnowWhatChangedOnACardThatCannotBeReadBack)
{
    card.behave(timeSet, [this](const FakeCard::Request&) {
        card.refuseConnections();
        return done;
    });
    EXPECT_EQ(run({"-o", "json", "--timeout", "3", "time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("\"category\": \"refused\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(outHas("\"phase\": \"reading the time reference back\""));
    EXPECT_TRUE(outHas("what the card has now is not known: the host is up, but nothing listens"));
}

TEST_F(TimeCommandsTest, SetDoesNotKnowWhatChangedOnACardThatTellsNothingOfUse)
{
    for (const FakeCard::Answer& useless : {says("nonsense"), FakeCard::Answer{.status = refused}}) {
        card.answer(timeGet, says(timeXml("Manual", "10.0.0.1", "2021-03-04T05:06:07")));
        card.behave(timeSet, [&](const FakeCard::Request&) {
            card.answer(timeGet, useless);
            return done;
        });
        EXPECT_EQ(run({"-o", "json", "time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 5);
        EXPECT_TRUE(outHas("\"changed\": null"));
    }
}

// A clock that was set by hand before looks like one that is set now.
TEST_F(TimeCommandsTest, SetDoesNotKnowWhetherAClockThatIsRightWasSet)
{
    const auto takesSilently = [this](const FakeCard::Request& request) {
        card.answer(timeGet, says(request.text));
        return FakeCard::Answer{.hangsUp = true};
    };
    card.behave(timeSet, takesSilently);
    EXPECT_EQ(run({"-o", "json", "time", "set", "--manual", "2021-03-04T05:06:07", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"changed\": null"));
    card.answer(timeGet, says(timeXml("Ntp", "10.0.0.1", "2021-03-04T05:06:07")));
    EXPECT_EQ(run({"-o", "json", "time", "set", "--manual", "2021-03-04T05:06:07", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"changed\": true"));
}

TEST_F(TimeCommandsTest, SetTellsOfEachTargetThatNothingCanBeHeardWhereTheUserSays)
{
    EXPECT_EQ(runBare({"tarvelctl", "-i", "nowhere0", "-o", "csv", "--columns", "target,code,category", "time", "set",
                       "--ntp", "10.0.0.5", "127.0.0.1", "127.0.0.2"}),
              6);
    EXPECT_EQ(out, "target,code,category\n127.0.0.1,6,no-interface\n127.0.0.2,6,no-interface\n");
    EXPECT_TRUE(errHas("--no-probe"));
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(TimeCommandsTest, SetChangesNothingIfThisMachineGivesNoSocketToAskWith)
{
    const FakeInterface lan("lan0", "192.0.2.1", "255.255.255.0");
    failNext("socket", EMFILE);
    EXPECT_EQ(runBare({"tarvelctl", "-o", "json", "time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 1);
    EXPECT_TRUE(outHas("\"category\": \"no-socket\""));
    EXPECT_TRUE(outHas(errorText("cannot broadcast on lan0: ", EMFILE) + "; nothing was sent"));
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(TimeCommandsTest, SetTellsWhereAnAddressIsFrom)
{
    sandbox.write("/tmp/groups", "noted 127.0.0.1\n");
    const std::vector<std::string> words = {"--timeout",
                                            "0.3",
                                            "--groups",
                                            sandbox.path("/tmp/groups"),
                                            "-o",
                                            "csv",
                                            "--columns",
                                            "target,ok,address_from",
                                            "--trust-groups",
                                            "time",
                                            "set",
                                            "--ntp",
                                            "10.0.0.5"};
    for (const auto& [target, line] : {std::pair{"card1", "card1,yes,lookup\n"}, {"noted", "noted,yes,groups\n"}}) {
        std::vector<std::string> all = words;
        all.emplace_back(target);
        EXPECT_EQ(run(all), 0) << target;
        EXPECT_TRUE(outHas(line)) << out;
    }
}

TEST_F(TimeCommandsTest, SetReadsButChangesNothingInADryRun)
{
    EXPECT_EQ(run({"--dry-run", "time", "set", "--ntp", "10.0.0.5", "127.0.0.1"}), 0);
    EXPECT_EQ(card.texts(timeGet).size(), 1U);
    EXPECT_TRUE(card.texts(timeSet).empty());
    EXPECT_TRUE(outHas("NtpServer=\"10.0.0.5\""));
}

TEST_F(TimeCommandsTest, SetRefusesWhatMakesNoSense)
{
    EXPECT_EQ(run({"time", "set", "127.0.0.1"}), 2);
    EXPECT_TRUE(errHas("give either --ntp or --manual"));
    EXPECT_EQ(run({"time", "set", "--manual", "soon", "127.0.0.1"}), 2);
    EXPECT_TRUE(errHas("\"soon\" is no time such as 2026-03-04T05:06:07Z"));
    EXPECT_TRUE(card.requests().empty());
}

} // namespace
