// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/TimeReference.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"
#include "unit/timesettings/TimeReferenceNames.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

// The lock around a new time reference, and what becomes of the result when a step of it fails.

namespace
{

using TimeReferenceLockTest = SystemTest;

bool isFree(const Sandbox& sandbox)
{
    const int other = open(sandbox.path(lockFile).c_str(), O_RDWR | O_CLOEXEC);
    const bool taken = flock(other, LOCK_EX | LOCK_NB) == 0;
    close(other);
    return taken;
}

TEST_F(TimeReferenceLockTest, TheStepsAreTakenInOrder)
{
    tsSetTimeReference("Manual", nullptr, 86400, 1);
    const Texts order = orderOf({"open", "flock", "clock_settime", "fopen", "fclose"});
    EXPECT_EQ(order, (Texts{"open: /var/timesettings.lock O_RDWR|O_CREAT|O_CLOEXEC 0644", "flock: LOCK_EX",
                            "clock_settime: CLOCK_REALTIME 86400", "fopen: /var/timesettings.replication we",
                            "fclose: ", "flock: LOCK_UN"}));
}

TEST_F(TimeReferenceLockTest, TheLockFileIsClosedLast)
{
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_TRUE(orderOf({"open", "flock", "fclose", "close"}).back().starts_with("close: "));
    EXPECT_EQ(callsTo("close").size(), 1U);
}

TEST_F(TimeReferenceLockTest, OthersAreKeptOutWhileTheServiceIsControlled)
{
    bool kept = true;
    shell.respondWith([&](std::string_view) {
        kept = kept && !isFree(sandbox);
        return std::nullopt;
    });
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_TRUE(kept);
    EXPECT_EQ(shell.commands().size(), 6U);
}

TEST_F(TimeReferenceLockTest, OthersAreLetInAfterwards)
{
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_TRUE(isFree(sandbox));
}

TEST_F(TimeReferenceLockTest, TheLockFileStaysAndIsEmpty)
{
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_EQ(sandbox.read(lockFile), "");
}

TEST_F(TimeReferenceLockTest, WithoutALockFileNothingElseHappens)
{
    failNext("open", EACCES);
    EXPECT_EQ(tsSetTimeReference("Ntp", "10.0.0.5", 0, 1), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("open() FAILED: ", EACCES)}}));
    EXPECT_TRUE(orderOf({"flock", "system", "fopen", "close"}).empty());
    EXPECT_FALSE(sandbox.exists(marker));
}

TEST_F(TimeReferenceLockTest, WithoutTheLockNothingElseHappens)
{
    failNext("flock", ENOLCK);
    EXPECT_EQ(tsSetTimeReference("Ntp", "10.0.0.5", 0, 1), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("flock() FAILED: ", ENOLCK)}}));
    EXPECT_TRUE(shell.commands().empty());
    EXPECT_FALSE(sandbox.exists(marker));
}

TEST_F(TimeReferenceLockTest, WithoutTheLockTheFileIsClosed)
{
    failNext("flock", ENOLCK);
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_EQ(callsTo("close").size(), 1U);
}

TEST_F(TimeReferenceLockTest, TheReasonOfAFailureIsLoggedBeforeTheCloseThatFailsToo)
{
    failNext("flock", ENOLCK);
    failNext("close", EIO);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), -1);
    EXPECT_EQ(log.lines(),
              (Lines{{4, errorText("flock() FAILED: ", ENOLCK)}, {4, errorText("close() FAILED: ", EIO)}}));
}

TEST_F(TimeReferenceLockTest, ALockThatCannotBeReleasedIsAFailureThoughAllWasApplied)
{
    passNext("flock");
    failNext("flock", EIO);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), -1);
    EXPECT_EQ(log.warnings(), Texts{errorText("flock() FAILED: ", EIO)});
    EXPECT_EQ(shell.commands().size(), 6U);
    EXPECT_TRUE(sandbox.exists(marker));
}

TEST_F(TimeReferenceLockTest, ALockThatCannotBeReleasedIsDroppedByTheClose)
{
    passNext("flock");
    failNext("flock", EIO);
    tsSetTimeReference("Ntp", nullptr, 0, 1);
    EXPECT_EQ(callsTo("close").size(), 1U);
    EXPECT_TRUE(isFree(sandbox));
}

TEST_F(TimeReferenceLockTest, AFileThatCannotBeClosedIsAFailureAndNotClosedAgain)
{
    failNext("close", EIO);
    EXPECT_EQ(tsSetTimeReference("Ntp", nullptr, 0, 1), -1);
    EXPECT_EQ(log.warnings(), Texts{errorText("close() FAILED: ", EIO)});
    EXPECT_EQ(callsTo("close").size(), 1U);
}

TEST_F(TimeReferenceLockTest, AFailureToApplyReleasesTheLockAllTheSame)
{
    tsSetTimeReference("ntp", nullptr, 0, 1);
    EXPECT_EQ(callsTo("flock"), (Texts{"LOCK_EX", "LOCK_UN"}));
}

} // namespace
