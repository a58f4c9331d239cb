// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/engine/EventLoop.h"
#include "client/engine/Descriptor.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <sys/socket.h>
#include <vector>

namespace
{

// Two ends of a stream; what is said on one makes the other readable.
struct Pair {
    Pair()
    {
        std::array<int, 2> ends = {};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()), 0);
        ours = Descriptor(ends[0]);
        others = Descriptor(ends[1]);
    }
    void say() const { EXPECT_EQ(::send(others.get(), "x", 1, MSG_NOSIGNAL), 1); }
    void fill() const
    {
        const std::array<char, 4096> piece = {};
        while (::send(ours.get(), piece.data(), piece.size(), MSG_NOSIGNAL) > 0) {
        }
    }

    Descriptor ours;
    Descriptor others;
};

constexpr TimePoint never = TimePoint::max();
constexpr TimePoint longAgo; // when the clock began

class ClientEventLoopTest : public testing::Test
{
protected:
    Task<bool> waitToRead(int descriptor, TimePoint deadline)
    {
        const bool ready = co_await loop.readable(descriptor, deadline);
        co_return ready;
    }

    Task<bool> waitToWrite(int descriptor, TimePoint deadline)
    {
        const bool ready = co_await loop.writable(descriptor, deadline);
        co_return ready;
    }

    EventLoop loop;
    Pair pair;
};

TEST_F(ClientEventLoopTest, TellsThatADescriptorIsReadable)
{
    pair.say();
    EXPECT_TRUE(loop.run(waitToRead(pair.ours.get(), never)));
}

TEST_F(ClientEventLoopTest, TellsThatTheDeadlineHasPassed)
{
    EXPECT_FALSE(loop.run(waitToRead(pair.ours.get(), longAgo)));
}

TEST_F(ClientEventLoopTest, PrefersADescriptorToItsDeadline)
{
    pair.say();
    EXPECT_TRUE(loop.run(waitToRead(pair.ours.get(), longAgo)));
}

TEST_F(ClientEventLoopTest, TellsTheEndOfAStreamAsReadable)
{
    pair.others.reset();
    EXPECT_TRUE(loop.run(waitToRead(pair.ours.get(), never)));
}

TEST_F(ClientEventLoopTest, TellsThatADescriptorIsWritable)
{
    EXPECT_TRUE(loop.run(waitToWrite(pair.ours.get(), never)));
    pair.fill();
    EXPECT_FALSE(loop.run(waitToWrite(pair.ours.get(), longAgo)));
}

TEST_F(ClientEventLoopTest, WaitsForAnyOfSeveral)
{
    const Pair another;
    another.say();
    const std::vector<int> both = {pair.ours.get(), another.ours.get()};
    const auto either = [&]() -> Task<bool> {
        const bool ready = co_await loop.anyReadable(both, never);
        co_return ready;
    };
    EXPECT_TRUE(loop.run(either()));
}

TEST_F(ClientEventLoopTest, WaitsForWhatItIsTold)
{
    const auto toWriteOrRead = [&](short events, TimePoint deadline) -> Task<bool> {
        const std::vector<pollfd> polled(1, pollfd{pair.ours.get(), events, 0});
        const bool ready = co_await loop.ready(polled, deadline);
        co_return ready;
    };
    EXPECT_TRUE(loop.run(toWriteOrRead(POLLIN | POLLOUT, never)));
    EXPECT_FALSE(loop.run(toWriteOrRead(POLLIN, longAgo)));
}

TEST_F(ClientEventLoopTest, ServesEachTaskWhenItsOwnDescriptorIsReady)
{
    const Pair another;
    std::vector<int> order;
    const auto first = [&]() -> Task<void> {
        co_await loop.readable(pair.ours.get(), never);
        order.push_back(1);
    };
    const auto second = [&]() -> Task<void> {
        co_await loop.readable(another.ours.get(), never);
        order.push_back(2);
        pair.say();
    };
    Task<void> waiting = first();
    waiting.start();
    another.say();
    loop.run(second());
    EXPECT_EQ(order, std::vector<int>{2});
    loop.run(waitToRead(pair.ours.get(), never));
    EXPECT_EQ(order, (std::vector<int>{2, 1}));
    EXPECT_TRUE(waiting.done());
}

TEST_F(ClientEventLoopTest, ForgetsAWaitWhoseTaskIsGone)
{
    {
        Task<bool> abandoned = waitToRead(pair.ours.get(), never);
        abandoned.start();
    }
    const Pair another;
    pair.say();
    another.say();
    EXPECT_TRUE(loop.run(waitToRead(another.ours.get(), never)));
}

// The first of two tasks that are ready ends the second: its wait must not be continued any more.
TEST_F(ClientEventLoopTest, LetsATaskEndAnother)
{
    std::optional<Task<bool>> second;
    const auto first = [&]() -> Task<void> {
        co_await loop.readable(pair.ours.get(), never);
        second.reset();
    };
    Task<void> ending = first();
    ending.start();
    second.emplace(waitToRead(pair.ours.get(), never));
    second->start();
    pair.say();
    loop.run(waitToRead(pair.ours.get(), never));
    EXPECT_TRUE(ending.done());
    EXPECT_FALSE(second.has_value());
}

TEST_F(ClientEventLoopTest, InterruptsAllWaitsOfTheMomentAndNoLaterOne)
{
    Task<bool> other = waitToRead(pair.ours.get(), never);
    other.start();
    const auto stopped = [&]() -> Task<void> {
        loop.interrupt();
        co_await loop.until(longAgo);
    };
    loop.run(stopped());
    EXPECT_TRUE(other.done());
    EXPECT_THROW(other.result(), Interrupted);
}

TEST_F(ClientEventLoopTest, RefusesATaskThatNothingWillEverContinue)
{
    struct Lost {
        [[nodiscard]] bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> /*handle*/) const noexcept {}
        void await_resume() const noexcept {}
    };
    const auto lost = []() -> Task<void> { co_await Lost(); };
    EXPECT_THROW(loop.run(lost()), std::logic_error);
}

TEST_F(ClientEventLoopTest, CarriesAResultAndAnExceptionThroughTasks)
{
    const auto inner = [](bool fails) -> Task<int> {
        if (fails) {
            throw std::runtime_error("inner");
        }
        co_return 7;
    };
    const auto outer = [&](bool fails) -> Task<int> {
        const int value = co_await inner(fails);
        co_return value + 1;
    };
    EXPECT_EQ(loop.run(outer(false)), 8);
    EXPECT_THROW(loop.run(outer(true)), std::runtime_error);
}

TEST_F(ClientEventLoopTest, TicksWhileItWaitsAndNoOftenerThanWanted)
{
    int ticks = 0;
    const TimePoint start = Clock::now();
    loop.setTicker(Seconds(0.01), [&] { ++ticks; });
    EXPECT_FALSE(loop.run(waitToRead(pair.ours.get(), after(Seconds(0.1)))));
    EXPECT_GE(ticks, 1);
    EXPECT_LE(ticks, Seconds(Clock::now() - start) / Seconds(0.01));
}

TEST_F(ClientEventLoopTest, StandsStillUntilSomethingIsSaid)
{
    pair.say();
    loop.standStillUntilReadable(pair.ours.get());
    EXPECT_FALSE(loop.wasInterrupted());
}

TEST_F(ClientEventLoopTest, StandsStillOnlyUntilTheUserWantsToStop)
{
    const Pair interrupts;
    loop.setInterruptDescriptor(interrupts.ours.get());
    interrupts.say();
    EXPECT_THROW(loop.standStillUntilReadable(pair.ours.get()), Interrupted);
    EXPECT_TRUE(loop.wasInterrupted());
}

TEST_F(ClientEventLoopTest, TicksInLongWorkThatDoesNotWait)
{
    bool hasTicked = false;
    loop.setTicker(Seconds(0), [&] { hasTicked = true; });
    loop.takeInterrupt();
    EXPECT_TRUE(hasTicked);
}

} // namespace
