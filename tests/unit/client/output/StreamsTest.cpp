// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Streams.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

// Standard output goes somewhere else, until the end of the test.
class StreamsTest : public testing::Test
{
protected:
    StreamsTest()
    {
        std::fflush(stdout);
        std::signal(SIGPIPE, SIG_IGN);
    }

    ~StreamsTest() override
    {
        redirect(kept);
        std::signal(SIGPIPE, SIG_DFL);
    }

    static void redirect(int target)
    {
        ASSERT_EQ(::dup2(target, STDOUT_FILENO), STDOUT_FILENO);
        ::close(target);
    }

    // What is written while standard output goes to the target, and what becomes of it.
    static Delivery deliverTo(int target)
    {
        redirect(target);
        writeData(std::string(100000, 'x'));
        const Delivery delivery = finishData();
        std::clearerr(stdout);
        return delivery;
    }

    int kept = ::dup(STDOUT_FILENO);
};

TEST_F(StreamsTest, DeliverWhatIsTaken)
{
    EXPECT_EQ(deliverTo(::open("/dev/null", O_WRONLY)), Delivery::complete);
}

TEST_F(StreamsTest, KnowThatTheReaderIsGone)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(::pipe(ends.data()), 0);
    ::close(ends[0]);
    EXPECT_EQ(deliverTo(ends[1]), Delivery::readerGone);
}

TEST_F(StreamsTest, KnowThatTheDiskIsFull)
{
    EXPECT_EQ(deliverTo(::open("/dev/full", O_WRONLY)), Delivery::failed);
}

} // namespace
