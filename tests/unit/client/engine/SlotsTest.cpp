// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/engine/Slots.h"

#include "client/engine/Parallel.h"
#include "client/engine/Signal.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace
{

class SlotsTest : public testing::Test
{
protected:
    Task<void> useOne(std::size_t index)
    {
        const Slots::Held slot = co_await slots;
        most = std::max(most, ++running);
        co_await loop.until(Clock::now());
        order.push_back(index);
        --running;
    }

    EventLoop loop;
    Slots slots{loop, 2};
    std::vector<std::size_t> order;
    int running = 0;
    int most = 0;
};

TEST_F(SlotsTest, AreNeverMoreThanThereAre)
{
    loop.run(inParallel(loop, 5, 5, [&](std::size_t index) { return useOne(index); }));
    EXPECT_EQ(most, 2);
}

TEST_F(SlotsTest, GoToWhoeverCameFirst)
{
    loop.run(inParallel(loop, 5, 5, [&](std::size_t index) { return useOne(index); }));
    EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST_F(SlotsTest, AreFreeAgainAfterAFailure)
{
    const auto work = [&](std::size_t index) -> Task<void> {
        const Slots::Held slot = co_await slots;
        order.push_back(index);
        co_await loop.until(Clock::now());
        throw 7;
    };
    EXPECT_THROW(loop.run(inParallel(loop, 5, 5, work)), int);
    EXPECT_EQ(order.size(), 5);
}

class SignalTest : public SlotsTest
{
protected:
    Task<void> waitOrSet(std::size_t index)
    {
        if (index == 2) {
            co_await loop.until(Clock::now());
            order.push_back(index);
            signal.set();
        }
        co_await signal;
        order.push_back(index);
    }

    Signal signal{loop};
};

TEST_F(SignalTest, ContinuesAllThatWaitAndHoldsUpNobodyAfterwards)
{
    loop.run(inParallel(loop, 3, 3, [&](std::size_t index) { return waitOrSet(index); }));
    EXPECT_EQ(order, (std::vector<std::size_t>{2, 2, 0, 1}));
}

} // namespace
