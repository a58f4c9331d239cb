// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/CommandLine.h"

#include "UciSandbox.h"

namespace
{

class UciCommandLine : public UciSandbox
{
};

TEST_F(UciCommandLine, withoutACommandItSaysSo)
{
    EXPECT_EQ(runTool({}).errors.substr(0, 21), "uci: command missing\n");
}

TEST_F(UciCommandLine, anUnknownCommandIsNamed)
{
    EXPECT_EQ(uci({"frobnicate"}).errors.substr(0, 33), "uci: unknown command: frobnicate\n");
}

TEST_F(UciCommandLine, anUnknownCommandHasAStatusOfItsOwn)
{
    EXPECT_EQ(uci({"frobnicate"}).status, 255);
}

TEST_F(UciCommandLine, anUnknownOptionIsNamed)
{
    EXPECT_EQ(uci({"-z", "show"}).errors.substr(0, 24), "uci: unknown option: -z\n");
}

TEST_F(UciCommandLine, aDirectoryOptionNeedsADirectory)
{
    EXPECT_EQ(runTool({"-c"}).status, 255);
}

TEST_F(UciCommandLine, aMissingArgumentIsNoticed)
{
    EXPECT_EQ(uci({"get"}).errors.substr(0, 27), "uci: get: argument missing\n");
}

TEST_F(UciCommandLine, aSecondArgumentIsNoticed)
{
    writeConfig("c", "config t s\n");
    EXPECT_EQ(uci({"set", "c.s.o=two", "words"}).status, 255);
}

TEST_F(UciCommandLine, aFailureIsReported)
{
    EXPECT_EQ(uci({"get", "c.s.o"}).errors, "uci: Entry not found\n");
}

TEST_F(UciCommandLine, aQuietFailureSaysNothing)
{
    EXPECT_EQ(uci({"-q", "get", "c.s.o"}).errors, "");
}

TEST_F(UciCommandLine, aQuietFailureIsStillAFailure)
{
    EXPECT_EQ(uci({"-q", "get", "c.s.o"}).status, 1);
}

TEST_F(UciCommandLine, theChangesDirectoryHasTwoOptions)
{
    writeConfig("c", "config t s\n");
    runTool({"-c", configs(), "-P", staged(), "set", "c.s.o=1"});
    EXPECT_EQ(output({"get", "c.s.o"}), "1\n");
}

} // namespace
