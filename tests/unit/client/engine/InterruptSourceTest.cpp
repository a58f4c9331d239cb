// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/engine/InterruptSource.h"
#include "client/engine/EventLoop.h"

#include <csignal>
#include <gtest/gtest.h>

namespace
{

// All signals are real ones.
class InterruptSourceTest : public testing::Test
{
protected:
    InterruptSourceTest() { loop.setInterruptDescriptor(interrupts.descriptor()); }

    Task<void> waitForEver() { co_await loop.until(TimePoint::max()); }

    Task<void> waitForAMoment()
    {
        co_await loop.until(Clock::now());
        ++finished;
    }

    // What a command does that tells or mends the state of a card before it ends.
    Task<void> goOnAfterAnInterrupt()
    {
        try {
            co_await waitForEver();
        } catch (const Interrupted&) {
            ++interruptions;
        }
        co_await waitForAMoment();
        co_await waitForAMoment();
    }

    EventLoop loop;
    InterruptSource interrupts;
    int interruptions = 0;
    int finished = 0;
};

TEST_F(InterruptSourceTest, InterruptsTheWait)
{
    std::raise(SIGINT);
    EXPECT_THROW(loop.run(waitForEver()), Interrupted);
    EXPECT_TRUE(loop.wasInterrupted());
}

TEST_F(InterruptSourceTest, InterruptsTheWaitForSigtermToo)
{
    std::raise(SIGTERM);
    EXPECT_THROW(loop.run(waitForEver()), Interrupted);
}

TEST_F(InterruptSourceTest, LeavesLaterWaitsAlone)
{
    std::raise(SIGINT);
    loop.run(goOnAfterAnInterrupt());
    EXPECT_EQ(interruptions, 1);
    EXPECT_EQ(finished, 2);
}

TEST_F(InterruptSourceTest, RefusesWorkThatBeginsLater)
{
    EXPECT_NO_THROW(loop.refuseAfterInterrupt());
    std::raise(SIGINT);
    loop.run(goOnAfterAnInterrupt());
    EXPECT_THROW(loop.refuseAfterInterrupt(), Interrupted);
}

TEST_F(InterruptSourceTest, LetsASecondSignalEndTheProgram)
{
    const auto raiseTwice = [](int first, int second) {
        std::raise(first);
        std::raise(second);
    };
    EXPECT_EXIT(raiseTwice(SIGINT, SIGINT), testing::KilledBySignal(SIGINT), "");
    EXPECT_EXIT(raiseTwice(SIGINT, SIGTERM), testing::KilledBySignal(SIGTERM), "");
}

TEST(InterruptSourceEndTest, LeavesTheSignalsAsTheyWere)
{
    {
        const InterruptSource interrupts;
    }
    struct sigaction now = {};
    ASSERT_EQ(sigaction(SIGINT, nullptr, &now), 0);
    EXPECT_EQ(now.sa_handler, SIG_DFL);
}

} // namespace
