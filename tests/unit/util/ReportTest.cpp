// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "util/Report.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>

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

TEST_F(ReportTest, NothingIsLogged)
{
    CapturedOutput output;
    reportProgress("one");
    reportFailure("two");
    reportErrno("three");
    EXPECT_TRUE(log.lines().empty());
}
