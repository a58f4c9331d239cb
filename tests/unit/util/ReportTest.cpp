// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Report.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <array>
#include <cerrno>

#include <sys/socket.h>
#include <unistd.h>

using ReportTest = SystemTest;

TEST_F(ReportTest, ProgressIsALineOnStandardOutput)
{
    CapturedOutput output;
    reportProgress("Extracting");
    EXPECT_EQ(output.out(), "Extracting\n");
    EXPECT_EQ(output.err(), "");
}

TEST_F(ReportTest, AFailureIsALineOnStandardError)
{
    CapturedOutput output;
    reportFailure("not found");
    EXPECT_EQ(output.err(), "not found\n");
    EXPECT_EQ(output.out(), "");
}

TEST_F(ReportTest, AFailedCallIsALineOnStandardErrorThatEndsInTheTextOfErrno)
{
    CapturedOutput output;
    errno = EACCES;
    reportErrno("open() failed: ");
    EXPECT_EQ(output.err(), errorText("open() failed: ", EACCES) + "\n");
}

// A socket keeps what was written at once apart from what was written next.
TEST_F(ReportTest, AFailureIsWrittenInOnePiece)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()), 0);
    const int standardError = dup(STDERR_FILENO);
    dup2(ends[0], STDERR_FILENO);
    reportFailure("not found");
    dup2(standardError, STDERR_FILENO);

    std::array<char, 100> piece = {};
    EXPECT_EQ(read(ends[1], piece.data(), piece.size()), 10);
    EXPECT_STREQ(piece.data(), "not found\n");
    for (const int descriptor : {standardError, ends[0], ends[1]}) {
        close(descriptor);
    }
}

TEST_F(ReportTest, NothingIsLogged)
{
    CapturedOutput output;
    reportProgress("one");
    reportFailure("two");
    reportErrno("three");
    EXPECT_TRUE(log.lines().empty());
}
