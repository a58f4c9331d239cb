// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/TimeChange.h"

#include "client/engine/InterruptSource.h"
#include "unit/client/FailureOf.h"
#include "unit/client/wire/LoopbackListener.h"

#include <csignal>
#include <gtest/gtest.h>

namespace
{

const TimeRequest toFollow{.mode = TimeMode::ntp, .server = "10.0.0.5", .time = 0};

class TimeChangeTest : public testing::Test
{
protected:
    TimeChangeTest() { loop.setInterruptDescriptor(interrupts.descriptor()); }

    Task<void> change() { co_await setTimeReference(network, card.endpoint(), toFollow, progress); }

    LoopbackListener card;
    InterruptSource interrupts;
    EventLoop loop;
    Network network{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {}}};
    TimeProgress progress;
};

TEST_F(TimeChangeTest, HasToldNothingWhileItConnects)
{
    card.fillQueue();
    std::raise(SIGINT); // to be noticed with the first wait
    const Failure failure = failureOf([&] { loop.run(change()); });
    EXPECT_EQ(failure.code, ExitCode::interrupted);
    EXPECT_EQ(failure.hint, "interrupted; nothing was sent");
    EXPECT_FALSE(progress.told);
}

} // namespace
