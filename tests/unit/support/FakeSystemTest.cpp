// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/FakeSystem.h"

#include "OrdinaryCalls.h"
#include "support/SystemTest.h"

#include <cerrno>

using FakeSystemTest = SystemTest;
using Commands = std::vector<std::string>;

TEST_F(FakeSystemTest, NotesCommandsDownAndRunsNone)
{
    EXPECT_EQ(ordinary::runSystem("touch ran"), 0);
    EXPECT_EQ(shell.commands(), Commands{"touch ran"});
    EXPECT_FALSE(sandbox.exists("ran"));
}

TEST_F(FakeSystemTest, AnswersACertainCommandEachTime)
{
    shell.answer("false", exitStatus(1));
    ordinary::runSystem("false");
    EXPECT_EQ(ordinary::runSystem("false"), exitStatus(1));
    EXPECT_EQ(ordinary::runSystem("true"), 0);
}

TEST_F(FakeSystemTest, AnswersOtherCommandsInTheGivenOrder)
{
    shell.answerNext(exitStatus(3));
    shell.answerNext(killedBy(9));
    EXPECT_EQ(ordinary::runSystem("a"), 3 << 8);
    EXPECT_EQ(ordinary::runSystem("b"), 9);
    EXPECT_EQ(ordinary::runSystem("c"), 0);
}

TEST_F(FakeSystemTest, CanFailToStartTheShell)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(ordinary::runSystem("a"), -1);
    EXPECT_EQ(errno, ENOMEM);
}

TEST_F(FakeSystemTest, WritesTheOutputToTheFileOfARedirection)
{
    shell.answer("uci get a.b > /tmp/uci.tmp", 0, "value\n");
    ordinary::runSystem("uci get a.b > /tmp/uci.tmp");
    EXPECT_EQ(sandbox.read("/tmp/uci.tmp"), "value\n");
}

TEST_F(FakeSystemTest, EmptiesTheFileOfARedirectionWithoutOutput)
{
    sandbox.write("/tmp/out", "old");
    ordinary::runSystem("ls > /tmp/out 2>&1");
    EXPECT_EQ(sandbox.read("/tmp/out"), "");
}

TEST_F(FakeSystemTest, AppendsToTheFileOfADoubleRedirection)
{
    sandbox.write("/tmp/out", "old ");
    shell.answerNext(0, "new");
    ordinary::runSystem("ls >> /tmp/out 2>&1");
    EXPECT_EQ(sandbox.read("/tmp/out"), "old new");
}

TEST_F(FakeSystemTest, GivesOutputAndStatusThroughAPipe)
{
    shell.answer("cat", exitStatus(2), "two pieces of this text\n");
    EXPECT_EQ(ordinary::readPipe("cat"), "two pieces of this text\n512");
}

TEST_F(FakeSystemTest, AnswersGetsFromTheSettings)
{
    uci.set("system.ntp.server", "10.1.2.3");
    EXPECT_EQ(ordinary::runSystem("uci -q get system.ntp.server > /tmp/uci.tmp"), 0);
    EXPECT_EQ(sandbox.read("/tmp/uci.tmp"), "10.1.2.3\n");
    EXPECT_EQ(ordinary::runSystem("uci -q get system.ntp.pool > /tmp/uci.tmp"), exitStatus(1));
}
