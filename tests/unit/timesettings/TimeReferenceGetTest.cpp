// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/TimeReference.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"
#include "unit/timesettings/TimeReferenceNames.h"

#include <array>
#include <cerrno>

// The consumer's side: reading the time reference, and the marker of one that is not replicated yet.

namespace
{

using ReplicationTest = SystemTest;

class TimeReferenceGetTest : public SystemTest
{
protected:
    int get() { return tsGetTimeReference(mode.data(), server.data(), &now); }

    std::array<char, 7> mode = {};
    std::array<char, 100> server = {};
    std::time_t now = 0;
};

TEST_F(TimeReferenceGetTest, TheModeTheServerAndTheTimeAreRead)
{
    sandbox.write("/etc/rc.d/S65ntpd", "");
    uci.set(serverKey, "10.0.0.5");
    clock.stopAt(1700000000);
    EXPECT_EQ(get(), 0);
    EXPECT_STREQ(mode.data(), "Ntp");
    EXPECT_STREQ(server.data(), "10.0.0.5");
    EXPECT_EQ(now, 1700000000);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TimeReferenceGetTest, ManualModeIsNoFailure)
{
    uci.set(serverKey, "10.0.0.5");
    EXPECT_EQ(get(), 0);
    EXPECT_STREQ(mode.data(), "Manual");
}

TEST_F(TimeReferenceGetTest, AServerOf150CharactersIsCutAfter99)
{
    uci.set(serverKey, std::string(150, 'a'));
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(server.data(), std::string(99, 'a'));
}

TEST_F(TimeReferenceGetTest, WithoutASettingForTheServerItFailsWithAWarning)
{
    EXPECT_EQ(get(), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, "getCurrentNtpServerAddress() FAILED"}}));
}

TEST_F(TimeReferenceGetTest, WithoutASettingForTheServerTheModeIsWrittenAllTheSame)
{
    get();
    EXPECT_STREQ(mode.data(), "Manual");
    EXPECT_STREQ(server.data(), "");
    EXPECT_TRUE(callsTo("time").empty());
}

TEST_F(TimeReferenceGetTest, ATimeThatCannotBeReadIsAWarning)
{
    uci.set(serverKey, "10.0.0.5");
    now = -1;
    failNext("time", EOVERFLOW);
    EXPECT_EQ(get(), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("time() FAILED: ", EOVERFLOW)}}));
}

TEST_F(TimeReferenceGetTest, TheStoredTimeTellsAFailure)
{
    uci.set(serverKey, "10.0.0.5");
    clock.stopAt(-1);
    EXPECT_EQ(get(), -1);
}

TEST_F(TimeReferenceGetTest, NoLockIsTaken)
{
    uci.set(serverKey, "10.0.0.5");
    get();
    EXPECT_TRUE(orderOf({"open", "flock"}).empty());
}

TEST_F(ReplicationTest, IsNeededWhileTheMarkerIsThere)
{
    sandbox.write(marker, "");
    EXPECT_EQ(tsIsReplicationNeeded(), 1);
    EXPECT_EQ(callsTo("access"), Texts{"/var/timesettings.replication 0"});
}

TEST_F(ReplicationTest, IsNotNeededWithoutTheMarker)
{
    EXPECT_EQ(tsIsReplicationNeeded(), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ReplicationTest, IsNeededAfterATimeReferenceWasSet)
{
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_EQ(tsIsReplicationNeeded(), 1);
}

TEST_F(ReplicationTest, IsDoneOnceThoughTheTimeReferenceWasSetTwice)
{
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_EQ(tsSetReplicationDone(), 0);
    EXPECT_EQ(tsIsReplicationNeeded(), 0);
}

TEST_F(ReplicationTest, DoneRemovesTheMarkerSilently)
{
    sandbox.write(marker, "");
    EXPECT_EQ(tsSetReplicationDone(), 0);
    EXPECT_FALSE(sandbox.exists(marker));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ReplicationTest, DoneTwiceIsAWarning)
{
    sandbox.write(marker, "");
    tsSetReplicationDone();
    EXPECT_EQ(tsSetReplicationDone(), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, "calling tsSetReplicationDone() when no replication is needed"}}));
}

TEST_F(ReplicationTest, DoneWithoutAMarkerRemovesNothing)
{
    tsSetReplicationDone();
    EXPECT_TRUE(callsTo("remove").empty());
}

TEST_F(ReplicationTest, AMarkerThatCannotBeRemovedIsAWarningInLowerCase)
{
    sandbox.write(marker, "");
    failNext("remove", EROFS);
    EXPECT_EQ(tsSetReplicationDone(), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("remove() failed: ", EROFS)}}));
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(ReplicationTest, DoneTakesNoLock)
{
    sandbox.write(marker, "");
    tsSetReplicationDone();
    EXPECT_TRUE(orderOf({"open", "flock"}).empty());
}

} // namespace
