// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/TimeReference.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"
#include "unit/timesettings/TimeReferenceNames.h"
#include "util/Hardened.h"

#include <cerrno>

// What a new time reference does to the card when nothing goes wrong with the lock.

namespace
{

using NtpReferenceTest = SystemTest;
using ManualReferenceTest = SystemTest;
using ReplicationMarkerTest = SystemTest;

constexpr const char* getServer = "uci -q get system.ntp.server > /tmp/uci.tmp";

TEST_F(NtpReferenceTest, ANewServerIsSetAndTheServiceEnabledStoppedAndStarted)
{
    uci.set(serverKey, "192.168.1.10");
    EXPECT_EQ(tsSetTimeReference("Ntp", "10.0.0.5", 0, 1), 0);
    EXPECT_EQ(shell.commands(), (Texts{getServer, "uci -q set system.ntp.server=10.0.0.5", "/etc/init.d/ntpdate enable",
                                       "/etc/init.d/ntpd enable", "/etc/init.d/ntpdate stop", "/etc/init.d/ntpd stop",
                                       "/etc/init.d/ntpdate start", "/etc/init.d/ntpd start"}));
}

TEST_F(NtpReferenceTest, ANewServerLeavesTheMarker)
{
    uci.set(serverKey, "192.168.1.10");
    tsSetTimeReference("Ntp", "10.0.0.5", 0, 1);
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(NtpReferenceTest, TheModeAndBothAddressesAreLogged)
{
    uci.set(serverKey, "192.168.1.10");
    tsSetTimeReference("Ntp", "10.0.0.5", 0, 1);
    EXPECT_EQ(log.lines(), (Lines{{6, "Setting NTP time reference"},
                                  {6, "Current NTP server address: 192.168.1.10"},
                                  {6, "New NTP server address: 10.0.0.5"}}));
}

TEST_F(NtpReferenceTest, WithoutAServerTheSettingIsNotTouched)
{
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), 0);
    EXPECT_EQ(shell.commands(),
              (Texts{"/etc/init.d/ntpdate enable", "/etc/init.d/ntpd enable", "/etc/init.d/ntpdate stop",
                     "/etc/init.d/ntpd stop", "/etc/init.d/ntpdate start", "/etc/init.d/ntpd start"}));
}

TEST_F(NtpReferenceTest, AnEmptyServerCountsAsGiven)
{
    uci.set(serverKey, "192.168.1.10");
    EXPECT_EQ(tsSetTimeReference("Ntp", "", 0, 1), hardened ? -1 : 0);
    EXPECT_EQ(log.infos().back(), "New NTP server address: ");
}

TEST_F(NtpReferenceTest, WithoutASettingForTheServerNoScriptIsRun)
{
    EXPECT_EQ(tsSetTimeReference("Ntp", "10.0.0.5", 0, 1), -1);
    EXPECT_EQ(shell.commands(), Texts{getServer});
}

TEST_F(NtpReferenceTest, TheClockIsNotSet)
{
    tsSetTimeReference("Ntp", nullptr, 1700000000, 1);
    EXPECT_TRUE(clock.settings().empty());
}

TEST_F(NtpReferenceTest, AServiceThatCannotBeEnabledIsNotStopped)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), -1);
    EXPECT_EQ(shell.commands(), Texts{"/etc/init.d/ntpdate enable"});
}

TEST_F(NtpReferenceTest, AServiceThatCannotBeStoppedStaysEnabledAndIsNotStarted)
{
    shell.answerNext(0);
    shell.answerNext(0);
    shell.failToStart(ENOMEM);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), -1);
    EXPECT_EQ(shell.commands(),
              (Texts{"/etc/init.d/ntpdate enable", "/etc/init.d/ntpd enable", "/etc/init.d/ntpdate stop"}));
}

TEST_F(NtpReferenceTest, AServiceThatCannotBeStartedIsAFailure)
{
    for (int i = 0; i < 5; ++i) {
        shell.answerNext(0);
    }
    shell.failToStart(ENOMEM);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), -1);
    EXPECT_EQ(shell.commands().size(), 6U);
}

TEST_F(NtpReferenceTest, ScriptsThatFailDoNotMakeItFail)
{
    for (int i = 0; i < 6; ++i) {
        shell.answerNext(exitStatus(1));
    }
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), 0);
}

TEST_F(ManualReferenceTest, TheServiceIsDisabledAndStoppedBeforeTheClockIsSet)
{
    EXPECT_EQ(tsSetTimeReference("Manual", nullptr, 1700000000, 1), 0);
    EXPECT_EQ(orderOf({"system", "clock_settime"}),
              (Texts{"system: /etc/init.d/ntpdate disable", "system: /etc/init.d/ntpd disable",
                     "system: /etc/init.d/ntpdate stop", "system: /etc/init.d/ntpd stop",
                     "clock_settime: CLOCK_REALTIME 1700000000"}));
}

TEST_F(ManualReferenceTest, TheClockIsSetToTheFullSecond)
{
    tsSetTimeReference("Manual", nullptr, 1700000000, 1);
    ASSERT_EQ(clock.settings().size(), 1U);
    EXPECT_EQ(clock.settings().front().tv_sec, 1700000000);
    EXPECT_EQ(clock.settings().front().tv_nsec, 0);
}

TEST_F(ManualReferenceTest, ATimeBefore1970KeepsItsSign)
{
    tsSetTimeReference("Manual", nullptr, -86400, 1);
    ASSERT_EQ(clock.settings().size(), 1U);
    EXPECT_EQ(clock.settings().front().tv_sec, -86400);
    EXPECT_EQ(log.infos().back(), "Setting unix time to -86400");
}

TEST_F(ManualReferenceTest, TheModeAndTheTimeAreLogged)
{
    tsSetTimeReference("Manual", nullptr, 1700000000, 1);
    EXPECT_EQ(log.lines(), (Lines{{6, "Setting manual time reference"}, {6, "Setting unix time to 1700000000"}}));
}

TEST_F(ManualReferenceTest, TheMarkerIsLeft)
{
    tsSetTimeReference("Manual", nullptr, 1700000000, 1);
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(ManualReferenceTest, AServerIsSetInThisModeToo)
{
    uci.set(serverKey, "192.168.1.10");
    EXPECT_EQ(tsSetTimeReference("Manual", "10.0.0.5", 1700000000, 1), 0);
    EXPECT_EQ(shell.commands()[1], "uci -q set system.ntp.server=10.0.0.5");
}

TEST_F(ManualReferenceTest, AServerThatCannotBeSetSkipsTheRest)
{
    EXPECT_EQ(tsSetTimeReference("Manual", "10.0.0.5", 1700000000, 1), -1);
    EXPECT_EQ(shell.commands(), Texts{getServer});
    EXPECT_TRUE(clock.settings().empty());
    EXPECT_EQ(log.texts(), Texts{"Setting manual time reference"});
}

TEST_F(ManualReferenceTest, AServiceThatCannotBeDisabledSkipsTheRest)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(tsSetTimeReference("Manual", nullptr, 1700000000, 1), -1);
    EXPECT_EQ(shell.commands(), Texts{"/etc/init.d/ntpdate disable"});
    EXPECT_TRUE(clock.settings().empty());
}

TEST_F(ManualReferenceTest, AServiceThatCannotBeStoppedLeavesTheClock)
{
    for (int i = 0; i < 3; ++i) {
        shell.answerNext(0);
    }
    shell.failToStart(ENOMEM);
    EXPECT_EQ(tsSetTimeReference("Manual", nullptr, 1700000000, 1), -1);
    EXPECT_TRUE(clock.settings().empty());
    EXPECT_EQ(log.texts(), Texts{"Setting manual time reference"});
}

TEST_F(ManualReferenceTest, AClockThatCannotBeSetIsLoggedAndStillLeavesTheMarker)
{
    failNext("clock_settime", EPERM);
    EXPECT_EQ(tsSetTimeReference("Manual", nullptr, 1700000000, 1), -1);
    EXPECT_EQ(log.warnings(), Texts{errorText("clock_settime() FAILED: ", EPERM)});
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(ReplicationMarkerTest, AnUnsupportedModeRunsNothingAndStillLeavesTheMarker)
{
    EXPECT_EQ(tsSetTimeReference("ntp", "10.0.0.5", 1700000000, 1), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, "Unsupported time reference mode \"ntp\""}}));
    EXPECT_TRUE(shell.commands().empty());
    EXPECT_TRUE(clock.settings().empty());
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(ReplicationMarkerTest, AModeIsNotTakenForAFormat)
{
    tsSetTimeReference("%s%n", nullptr, 0, 0);
    EXPECT_EQ(log.warnings(), Texts{"Unsupported time reference mode \"%s%n\""});
}

TEST_F(ReplicationMarkerTest, ModesThatOnlyBeginOrEndLikeOneAreUnsupported)
{
    for (const char* mode : {"", "Nt", "Ntp ", "Manuals", "MANUAL"}) {
        EXPECT_EQ(tsSetTimeReference(mode, nullptr, 0, 0), -1) << mode;
    }
    EXPECT_TRUE(shell.commands().empty());
}

TEST_F(ReplicationMarkerTest, AServerThatCannotBeSetStillLeavesTheMarker)
{
    EXPECT_EQ(tsSetTimeReference("Ntp", "10.0.0.5", 0, 1), -1);
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(ReplicationMarkerTest, WithoutReplicationThereIsNoMarker)
{
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 0), 0);
    EXPECT_FALSE(sandbox.exists(marker));
}

TEST_F(ReplicationMarkerTest, WithoutReplicationAMarkerIsLeftAsItIs)
{
    sandbox.write(marker, "old");
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 0), 0);
    EXPECT_EQ(sandbox.read(marker), "old");
}

TEST_F(ReplicationMarkerTest, AnyNumberButZeroAsksForReplication)
{
    tsSetTimeReference("Ntp", nullptr, 0, -5);
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(ReplicationMarkerTest, AMarkerThatIsThereIsEmptied)
{
    sandbox.write(marker, "old");
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_EQ(sandbox.read(marker), "");
}

TEST_F(ReplicationMarkerTest, TheMarkerIsKeptFromShellCommands)
{
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_EQ(callsTo("fopen"), Texts{"/var/timesettings.replication we"});
}

TEST_F(ReplicationMarkerTest, AMarkerThatCannotBeMadeIsLoggedAndAFailure)
{
    failNext("fopen", ENOSPC);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), -1);
    EXPECT_EQ(log.warnings(), Texts{errorText("fopen() FAILED: ", ENOSPC)});
}

TEST_F(ReplicationMarkerTest, AMarkerThatCannotBeClosedIsLoggedAndNoFailure)
{
    failNext("fclose", EIO);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), 0);
    EXPECT_EQ(log.warnings(), Texts{errorText("fclose() FAILED: ", EIO)});
}

TEST_F(ReplicationMarkerTest, AMarkerThatCannotBeClosedDoesNotMakeAFailureGood)
{
    failNext("fclose", EIO);
    EXPECT_EQ(tsSetTimeReference("ntp", nullptr, 0, 1), -1);
}

} // namespace
