// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Phase.h"

#include "client/engine/EventLoop.h"
#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

Task<int> failWaiting(EventLoop& loop, std::string phase)
{
    co_await loop.until(Clock::now());
    throw Failure{ExitCode::noAnswer, Category::timeout, std::move(phase), ""};
}

TEST(PhaseTest, IsAddedToAFailureThatHasNone)
{
    EventLoop loop;
    EXPECT_EQ(failureOf([&] { loop.run(inPhase("asking", failWaiting(loop, ""))); }).phase, "asking");
    EXPECT_EQ(failureOf([] { inPhase("reading", [] { throw garbage("nonsense"); }); }).phase, "reading");
}

TEST(PhaseTest, StaysWhereAFailureKnowsItBetter)
{
    EventLoop loop;
    EXPECT_EQ(failureOf([&] { loop.run(inPhase("asking", failWaiting(loop, "connecting"))); }).phase, "connecting");
}

TEST(PhaseTest, LeavesAResultAlone)
{
    EXPECT_EQ(inPhase("reading", [] { return 7; }), 7);
}

} // namespace
