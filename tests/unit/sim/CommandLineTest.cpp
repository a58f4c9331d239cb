// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/CommandLine.h"

#include "UciSandbox.h"

#include <algorithm>

namespace
{

class CommandLineTest : public UciSandbox
{
};

long usageLinesOf(const ToolResult& result)
{
    return result.errors.starts_with("Usage:") ? std::ranges::count(result.errors, '\n') : 0;
}

TEST_F(CommandLineTest, WithoutACommandItTellsHowItGoes)
{
    EXPECT_EQ(usageLinesOf(runTool({})), 35);
    EXPECT_EQ(runTool({}).status, 0);
}

TEST_F(CommandLineTest, AnUnknownCommandIsAUsageError)
{
    EXPECT_EQ(uci({"frobnicate"}).status, 255);
    EXPECT_EQ(usageLinesOf(uci({"frobnicate"})), 35);
}

TEST_F(CommandLineTest, AUsageErrorIsToldQuietlyToo)
{
    EXPECT_EQ(usageLinesOf(uci({"-q", "get"})), 35);
}

TEST_F(CommandLineTest, AnUnknownOptionIsNoFailure)
{
    EXPECT_EQ(uci({"-z", "show"}).status, 0);
    EXPECT_EQ(usageLinesOf(uci({"-z", "show"})), 35);
}

TEST_F(CommandLineTest, ADirectoryOptionNeedsADirectory)
{
    EXPECT_EQ(usageLinesOf(runTool({"-c"})), 35);
}

TEST_F(CommandLineTest, AMissingArgumentIsNoticed)
{
    EXPECT_EQ(uci({"get"}).status, 255);
}

TEST_F(CommandLineTest, WhatIsNotSimulatedIsNamed)
{
    EXPECT_EQ(uci({"-q", "export"}).errors, "uci: export is not simulated\n");
    EXPECT_EQ(uci({"-S", "show"}).errors, "uci: -S is not simulated\n");
    EXPECT_EQ(uci({"export"}).status, 255);
}

TEST_F(CommandLineTest, ASecondArgumentIsNoticed)
{
    writeConfig("c", "config t s\n");
    EXPECT_EQ(uci({"set", "c.s.o=two", "words"}).status, 255);
}

TEST_F(CommandLineTest, AFailureIsReported)
{
    EXPECT_EQ(uci({"get", "c.s.o"}).errors, "uci: Entry not found\n");
}

TEST_F(CommandLineTest, AQuietFailureSaysNothing)
{
    EXPECT_EQ(uci({"-q", "get", "c.s.o"}).errors, "");
}

TEST_F(CommandLineTest, AQuietFailureIsStillAFailure)
{
    EXPECT_EQ(uci({"-q", "get", "c.s.o"}).status, 1);
}

TEST_F(CommandLineTest, TheOtherOptionForTheChangesDirectoryCommitsNothing)
{
    writeConfig("c", "config t s\n");
    runTool({"-c", configs(), "-P", staged(), "set", "c.s.o=1"});
    runTool({"-c", configs(), "-P", staged(), "commit", "c"});
    EXPECT_EQ(output({"get", "c.s.o"}), "1\n");
    EXPECT_EQ(config("c"), "config t s\n");
}

} // namespace
