// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "FirmwareFixture.h"

#include "support/Environment.h"

#include <csignal>
#include <filesystem>

namespace
{

using FirmwareCommandsTest = FirmwareFixture;

TEST_F(FirmwareCommandsTest, CheckListsTheMembers)
{
    EXPECT_EQ(run({"-o", "json", "firmware", "check", archive}), 0);
    EXPECT_TRUE(outHas("\"path\": \"pnr/kernel\""));
    EXPECT_TRUE(outHas("\"bytes\": 117"));
    EXPECT_TRUE(errHas("nothing in it that a card must not get"));
}

TEST_F(FirmwareCommandsTest, CheckTellsWhatIsNoArchive)
{
    sandbox.write("/tmp/firmware.tar.gz", "no archive");
    EXPECT_EQ(run({"firmware", "check", archive}), 10);
}

TEST_F(FirmwareCommandsTest, CheckAsksForASignatureOnlyIfThereIsAKey)
{
    sandbox.write("/tmp/maker.pub", "untrusted comment: maker\nRW" + std::string(54, 'A') + "\n");
    sandbox.write("/tmp/bin/usign", "#!/bin/sh\nexit 0\n");
    std::filesystem::permissions(sandbox.path("/tmp/bin/usign"), std::filesystem::perms::owner_all);
    const Environment path("PATH", sandbox.path("/tmp/bin"));
    EXPECT_EQ(run({"-o", "json", "firmware", "check", archive}), 0);
    EXPECT_FALSE(outHas("signed_by"));
    EXPECT_EQ(run({"-o", "json", "firmware", "check", "--key", sandbox.path("/tmp/maker.pub"), archive}), 10);
    EXPECT_TRUE(outHas("\"signed_by\": null"));
    EXPECT_TRUE(errHas("it is not signed: it has no SHA256SUMS and SHA256SUMS.sig"));
}

TEST_F(FirmwareCommandsTest, CheckNamesAKeyThatCannotBeRead)
{
    EXPECT_EQ(run({"firmware", "check", "--key", sandbox.path("/tmp/none.pub"), archive}), 10);
    EXPECT_TRUE(errHas("none.pub: No such file or directory"));
}

TEST_F(FirmwareCommandsTest, UploadSendsTheArchiveAsItIs)
{
    EXPECT_EQ(run({"-o", "json", "firmware", "upload", archive, "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"unpacked\""));
    EXPECT_TRUE(outHas("\"changed\": true"));
    ASSERT_EQ(card.texts(upload).size(), 1U);
    EXPECT_EQ(card.texts(upload).front() + '\0', archiveBytes()); // its last byte is no text's end, but is 0
}

TEST_F(FirmwareCommandsTest, UploadTellsThatTheCardRefuses)
{
    card.answer(upload, {.status = refused});
    EXPECT_EQ(run({"firmware", "upload", archive, "127.0.0.1"}), 3);
}

TEST_F(FirmwareCommandsTest, UploadIsNotRepeatedWhenTheCardHangsUp)
{
    card.answer(upload, {.hangsUp = true});
    EXPECT_EQ(run({"firmware", "upload", archive, "127.0.0.1"}), 5);
    EXPECT_EQ(card.texts(upload).size(), 1U);
}

TEST_F(FirmwareCommandsTest, UploadThatIsNotConfirmedIsNotKnown)
{
    card.answer(upload, silence);
    EXPECT_EQ(run({"-o", "json", "firmware", "upload", "--patience", "0.5", archive, "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("\"state\": \"unknown\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(outHas("\"phase\": \"waiting for the card to unpack\""));
    EXPECT_TRUE(errHas("whether the card has unpacked the archive is not known"));
}

TEST_F(FirmwareCommandsTest, UploadChangesNothingWhereNoConnectionIsTaken)
{
    EXPECT_EQ(run({"-o", "json", "firmware", "upload", archive, "127.0.0.1:1"}), 6);
    EXPECT_TRUE(outHas("\"changed\": false"));
}

TEST_F(FirmwareCommandsTest, UploadSendsNothingInADryRun)
{
    EXPECT_EQ(run({"--dry-run", "-o", "json", "firmware", "upload", archive, "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"not sent\""));
    EXPECT_TRUE(outHas("\"changed\": false"));
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(FirmwareCommandsTest, UpgradeTellsWhatChanged)
{
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", archive, "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"verdict\": \"upgraded\""));
    EXPECT_TRUE(outHas("\"changed\": true"));
    EXPECT_TRUE(outHas("\"before\": \"KERN-6.1.0\""));
    EXPECT_TRUE(outHas("\"after\": \"KERN-7.0.0\""));
}

TEST_F(FirmwareCommandsTest, UpgradeTellsThatNothingChanged)
{
    card.answer(upgrade, done);
    EXPECT_EQ(run({"firmware", "upgrade", archive, "127.0.0.1"}), 7);
    EXPECT_TRUE(errHas("the card took the archive, but its versions are what they were"));
}

TEST_F(FirmwareCommandsTest, UpgradeSendsNothingToACardThatHasWhatIsExpected)
{
    EXPECT_EQ(upgradeExpecting("kernel KERN-6.1.0\n"), 0);
    EXPECT_TRUE(outHas("\"verdict\": \"already there\""));
    EXPECT_TRUE(outHas("\"changed\": false"));
    EXPECT_TRUE(card.texts(upgrade).empty());
}

TEST_F(FirmwareCommandsTest, UpgradeIsJudgedByWhatIsExpected)
{
    EXPECT_EQ(upgradeExpecting("kernel KERN-7.0.0\n"), 0);
    EXPECT_TRUE(outHas("\"verdict\": \"upgraded\""));
    EXPECT_EQ(upgradeExpecting("kernel KERN-8.0.0\n"), 7);
    EXPECT_TRUE(outHas("\"verdict\": \"not as expected\""));
    EXPECT_TRUE(outHas("\"category\": \"not-as-expected\""));
    EXPECT_TRUE(errHas("has not the expected versions of kernel"));
}

TEST_F(FirmwareCommandsTest, UpgradeStopsAfterTheFirstBatchWithAFailure)
{
    EXPECT_EQ(run({"-o", "csv", "--columns", "target,code,category,changed", "firmware", "upgrade", "--batch", "1",
                   archive, "127.0.0.1:1", "127.0.0.1", "127.0.0.2"}),
              6);
    EXPECT_EQ(out, "target,code,category,changed\n"
                   "127.0.0.1:1,6,refused,no\n"
                   "127.0.0.1,6,untouched,no\n"
                   "127.0.0.2,6,untouched,no\n");
    EXPECT_TRUE(errHas("error: 127.0.0.2: untouched while waiting: a card of an earlier batch failed\n"));
    EXPECT_TRUE(err.ends_with("\n0 ok, 1 refused, 2 untouched\n"));
    EXPECT_TRUE(card.texts(upgrade).empty());
}

TEST_F(FirmwareCommandsTest, UpgradeFinishesABatchBeforeItStops)
{
    EXPECT_EQ(run({"-o", "csv", "--columns", "target,code", "firmware", "upgrade", "--batch", "2", archive,
                   "127.0.0.1:1", "127.0.0.1", "127.0.0.2"}),
              8);
    EXPECT_EQ(out, "target,code\n127.0.0.1:1,6\n127.0.0.1,0\n127.0.0.2,6\n");
}

TEST_F(FirmwareCommandsTest, UpgradeGoesOnToTheNextBatch)
{
    EXPECT_EQ(run({"firmware", "upgrade", "--batch", "1", archive, "127.0.0.1", "127.0.0.1:1"}), 8);
    EXPECT_FALSE(errHas("untouched"));
    EXPECT_EQ(card.texts(upgrade).size(), 1U);
}

TEST_F(FirmwareCommandsTest, UpgradeAsksUntilTheCardServesAgain)
{
    card.behave(upgrade, [this](const FakeCard::Request&) {
        card.behave(versions, [this](const FakeCard::Request&) {
            card.answer(versions, says(versionsXml("KERN-7.0.0")));
            return FakeCard::Answer{.hangsUp = true};
        });
        return done;
    });
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", archive, "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"verdict\": \"upgraded\""));
    EXPECT_EQ(card.texts(versions).size(), 3U);
}

TEST_F(FirmwareCommandsTest, UpgradeTellsWhenTheOutcomeIsNotKnown)
{
    card.behave(upgrade, [this](const FakeCard::Request&) {
        card.answer(versions, says("nonsense"));
        return done;
    });
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", archive, "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("\"category\": \"garbage\""));
    EXPECT_TRUE(errHas("it is not known whether it upgraded"));
}

TEST_F(FirmwareCommandsTest, UpgradeDoesNotKnowTheOutcomeOnACardThatTakesNoConnectionAnyMore)
{
    card.behave(upgrade, [this](const FakeCard::Request&) {
        card.refuseConnections();
        return done;
    });
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", "--patience", "0.5", archive, "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("\"category\": \"refused\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("it is not known whether it upgraded: the host is up, but nothing listens"));
}

TEST_F(FirmwareCommandsTest, UpgradeTellsAnInterruptionByWhatTheCardConfirmed)
{
    const auto interrupts = [](const FakeCard::Answer& answer) {
        return [answer](const FakeCard::Request&) {
            std::raise(SIGINT);
            return answer;
        };
    };
    card.behave(upgrade, interrupts(silence));
    EXPECT_EQ(run({"firmware", "upgrade", archive, "127.0.0.1"}), 130);
    EXPECT_TRUE(errHas("the whole archive was sent: the card may unpack and install it all the same"));
    card.behave(upgrade, [&](const FakeCard::Request&) {
        card.behave(versions, interrupts(silence));
        return hangUp;
    });
    EXPECT_EQ(run({"firmware", "upgrade", archive, "127.0.0.1"}), 130);
    EXPECT_TRUE(errHas("the card may go on with the upgrade all the same: it has not confirmed the archive"));
    card.answer(versions, old);
    card.behave(upgrade, [&](const FakeCard::Request&) {
        card.behave(versions, interrupts(silence));
        return done;
    });
    EXPECT_EQ(run({"firmware", "upgrade", archive, "127.0.0.1"}), 130);
    EXPECT_TRUE(errHas("the card goes on with the upgrade all the same"));
}

TEST_F(FirmwareCommandsTest, UpgradeThatIsNotConfirmedIsReadBack)
{
    upgradeUnconfirmed(silence, upgraded);
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", "--patience", "3", archive, "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"verdict\": \"upgraded\""));
    EXPECT_TRUE(outHas("\"changed\": true"));
    EXPECT_TRUE(outHas("\"after\": \"KERN-7.0.0\""));
    EXPECT_TRUE(errHas("the card did not confirm the archive in time, but has upgraded"));
    EXPECT_EQ(card.texts(upgrade).size(), 1U);
}

TEST_F(FirmwareCommandsTest, UpgradeWhoseConnectionIsLostIsReadBack)
{
    upgradeUnconfirmed(hangUp, upgraded);
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", archive, "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"verdict\": \"upgraded\""));
    EXPECT_EQ(card.texts(upgrade).size(), 1U);
}

TEST_F(FirmwareCommandsTest, UpgradeThatIsNotConfirmedAndNotDoneIsUnchanged)
{
    upgradeUnconfirmed(hangUp, old);
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", archive, "127.0.0.1"}), 7);
    EXPECT_TRUE(outHas("\"verdict\": \"unchanged\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("the card did not confirm the archive, and its versions are what they were"));
}

TEST_F(FirmwareCommandsTest, UpgradeThatIsNotConfirmedAndCannotBeReadBackIsNotKnown)
{
    upgradeUnconfirmed(silence, silence);
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", "--patience", "0.5", archive, "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("\"verdict\": \"unknown\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("what the card has now is not known"));
}

TEST_F(FirmwareCommandsTest, UpgradeThatIsNotConfirmedIsJudgedByWhatIsExpected)
{
    upgradeUnconfirmed(hangUp, upgraded);
    EXPECT_EQ(upgradeExpecting("kernel KERN-7.0.0\n"), 0);
    EXPECT_TRUE(outHas("\"verdict\": \"upgraded\""));
    EXPECT_EQ(upgradeExpecting("kernel KERN-8.0.0\n"), 7);
    EXPECT_TRUE(outHas("\"verdict\": \"not as expected\""));
    EXPECT_TRUE(errHas("the card did not confirm the archive, and has not the expected versions of kernel"));
}

TEST_F(FirmwareCommandsTest, UpgradeSendsNothingOfAnArchiveThatChangedSinceItWasChecked)
{
    card.behave(versions, [this](const FakeCard::Request&) { // asked for behind the check, and before the upgrade
        sandbox.write("/tmp/firmware.tar.gz", archiveBytes() + "more");
        return old;
    });
    EXPECT_EQ(run({"-o", "json", "firmware", "upgrade", archive, "127.0.0.1"}), 10);
    EXPECT_TRUE(outHas("\"changed\": false"));
    EXPECT_TRUE(errHas("has changed since it was checked"));
    EXPECT_TRUE(card.texts(upgrade).empty());
}

// Each answers by the name that it is asked by, from one address: only --force goes on then.
TEST_F(FirmwareCommandsTest, UpgradesOfOneCardNeverOverlap)
{
    card.behave(ipGet, [](const FakeCard::Request& request) {
        const bool isFirst = request.text.find("To=\"card1\"") != std::string::npos;
        return says(std::string("<IpConfiguration From=\"") + (isFirst ? "card1" : "card2") + "\" To=\"tarvelctl\">" +
                    interfaceXml("VemkEth1", "127.0.0.1") + "</IpConfiguration>");
    });
    EXPECT_EQ(run({"firmware", "upgrade", archive, "card1", "card2"}), 11);
    EXPECT_TRUE(card.texts(upgrade).empty());
    EXPECT_EQ(run({"--force", "firmware", "upgrade", archive, "card1", "card2"}), 8); // the second finds it done
    std::vector<std::uint16_t> served;
    for (const FakeCard::Request& request : card.requests()) {
        if (request.command == versions || request.command == upgrade) {
            served.push_back(request.command);
        }
    }
    EXPECT_EQ(served, (std::vector<std::uint16_t>{versions, upgrade, versions, versions, upgrade, versions}));
}

} // namespace
