// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/engine/Parallel.h"

#include <array>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace
{

class ParallelTest : public testing::Test
{
protected:
    Task<void> note(std::size_t index)
    {
        ++running;
        most = std::max(most, running);
        co_await loop.until(Clock::now());
        order.push_back(index);
        --running;
    }

    EventLoop loop;
    std::vector<std::size_t> order;
    std::size_t running = 0;
    std::size_t most = 0;
};

TEST_F(ParallelTest, DoesEveryPieceOnce)
{
    loop.run(inParallel(loop, 5, 2, [&](std::size_t index) { return note(index); }));
    EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST_F(ParallelTest, DoesNoMoreAtOnceThanAllowed)
{
    loop.run(inParallel(loop, 9, 3, [&](std::size_t index) { return note(index); }));
    EXPECT_EQ(most, 3);
}

TEST_F(ParallelTest, EndsAtOnceWithNothingToDo)
{
    loop.run(inParallel(loop, 0, 3, [&](std::size_t index) { return note(index); }));
    EXPECT_TRUE(order.empty());
}

TEST_F(ParallelTest, IsNotHeldUpByASlowPiece)
{
    std::array<int, 2> pipe = {};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const auto work = [&](std::size_t index) -> Task<void> {
        if (index == 0) { // ends only after the last of the others
            co_await loop.readable(pipe[0], TimePoint::max());
        }
        order.push_back(index);
        if (index == 3) {
            EXPECT_EQ(::write(pipe[1], "x", 1), 1);
        }
    };
    loop.run(inParallel(loop, 4, 2, work));
    EXPECT_EQ(order, (std::vector<std::size_t>{1, 2, 3, 0}));
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST_F(ParallelTest, ThrowsWhatAPieceThrewWhenAllAreDone)
{
    const auto work = [&](std::size_t index) -> Task<void> {
        co_await loop.until(Clock::now());
        if (index == 0) {
            throw 7;
        }
        order.push_back(index);
    };
    EXPECT_THROW(loop.run(inParallel(loop, 3, 3, work)), int);
    EXPECT_EQ(order, (std::vector<std::size_t>{1, 2}));
}

TEST_F(ParallelTest, InterruptsEveryWaitOnce)
{
    int interruptions = 0;
    const auto work = [&](std::size_t index) -> Task<void> {
        if (index == 2) {
            co_await loop.until(Clock::now());
            loop.interrupt(); // while the other two wait
            co_return;
        }
        try {
            co_await loop.until(TimePoint::max());
        } catch (const Interrupted&) {
            ++interruptions;
        }
        co_await loop.until(Clock::now()); // what is left to do can still be done
    };
    loop.run(inParallel(loop, 3, 3, work));
    EXPECT_EQ(interruptions, 2);
}

} // namespace
