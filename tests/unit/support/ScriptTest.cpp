// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/Script.h"

#include "OrdinaryCalls.h"
#include "support/SystemTest.h"

#include <cerrno>
#include <gtest/gtest-spi.h>

using ScriptTest = SystemTest;

TEST_F(ScriptTest, FailsOneCallOnly)
{
    failNext("fopen", EMFILE);
    sandbox.write("/etc/name", "card");
    EXPECT_EQ(ordinary::readLine("/etc/name"), "cannot open");
    EXPECT_EQ(ordinary::readLine("/etc/name"), "card");
}

TEST_F(ScriptTest, FailsEveryCall)
{
    failAlways("fgets", EIO);
    sandbox.write("/etc/name", "card");
    EXPECT_EQ(ordinary::readLine("/etc/name"), "nothing");
    EXPECT_EQ(ordinary::readLine("/etc/name"), "nothing");
}

TEST_F(ScriptTest, LetsCallsPassBeforeOneFails)
{
    passNext("stat", 2);
    failNext("stat", EACCES);
    EXPECT_TRUE(ordinary::exists("/tmp"));
    EXPECT_TRUE(ordinary::exists("/tmp"));
    EXPECT_FALSE(ordinary::exists("/tmp"));
}

TEST_F(ScriptTest, ReturnsAValueWithoutTheCall)
{
    returnNext("select", 0);
    EXPECT_EQ(ordinary::waitForNothing(), 0);
}

TEST_F(ScriptTest, AFailedWriteShowsInTheErrorFlag)
{
    failNext("fwrite", ENOSPC);
    EXPECT_FALSE(ordinary::writeFile("/tmp/file", "text"));
    EXPECT_TRUE(ordinary::writeFile("/tmp/file", "text"));
}

TEST_F(ScriptTest, ALimitedWriteMovesFewerBytes)
{
    limitNext("fwrite", 3);
    ordinary::writeFile("/tmp/file", "text");
    EXPECT_EQ(sandbox.read("/tmp/file"), "tex");
}

TEST_F(ScriptTest, AFailedCloseOfAStreamClosesItAllTheSame)
{
    failNext("fclose", EIO);
    sandbox.write("/etc/name", "card");
    EXPECT_EQ(ordinary::readLine("/etc/name"), "card (not closed)");
}

TEST_F(ScriptTest, AScriptThatNoCallUsedIsNamed)
{
    failNext("flock", EIO);
    failAlways("accept", EIO);
    EXPECT_EQ(unusedScripts(), (std::vector<std::string>{"accept", "flock"}));
    forgetScripts();
}
