// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Shell.h"

#include "support/SystemTest.h"

#include <cerrno>

using ShellTest = SystemTest;

TEST_F(ShellTest, TheCommandReachesTheShellAsItStands)
{
    EXPECT_EQ(runShell("reboot -d 2"), 0);
    EXPECT_EQ(shell.commands(), Texts{"reboot -d 2"});
}

TEST_F(ShellTest, TheRawWaitStatusIsReturned)
{
    shell.answerNext(exitStatus(3));
    EXPECT_EQ(runShell("fails"), 0x300);
}

TEST_F(ShellTest, WithoutAShellTheResultIsMinusOneAndErrnoTellsWhy)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(runShell("ls"), -1);
    EXPECT_EQ(errno, ENOMEM);
}

TEST_F(ShellTest, TheExitCodeIsInBitsEightToFifteen)
{
    EXPECT_EQ(exitCode(0x0000), 0);
    EXPECT_EQ(exitCode(0x0300), 3);
    EXPECT_EQ(exitCode(0xFF00), 255);
}

TEST_F(ShellTest, TheExitCodeOfAKilledCommandIsZero)
{
    EXPECT_EQ(exitCode(killedBy(9)), 0);
}
