// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/TimeChange.h"

#include "client/engine/InterruptSource.h"
#include "unit/client/FailureOf.h"
#include "unit/client/wire/LoopbackListener.h"

#include <array>
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

    // Nobody accepts these, and there is no room for more.
    void fillQueue()
    {
        const sockaddr_in address = socketAddress(card.endpoint());
        ::listen(card.descriptor(), 0);
        for (Descriptor& one : waiting) {
            one = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            ::connect(one.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
        }
    }

    LoopbackListener card;
    std::array<Descriptor, 4> waiting;
    InterruptSource interrupts;
    EventLoop loop;
    Network network{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {}}};
    TimeProgress progress;
};

TEST_F(TimeChangeTest, HasToldNothingWhileItConnects)
{
    fillQueue();
    std::raise(SIGINT); // to be noticed with the first wait
    const Failure failure = failureOf([&] { loop.run(change()); });
    EXPECT_EQ(failure.code, ExitCode::interrupted);
    EXPECT_EQ(failure.hint, "interrupted; nothing was sent");
    EXPECT_FALSE(progress.told);
}

} // namespace
