// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/Sandbox.h"

#include "OrdinaryCalls.h"
#include "support/SystemTest.h"

#include <filesystem>

using SandboxTest = SystemTest;

TEST_F(SandboxTest, NamesOfTheCardLeadIntoIt)
{
    sandbox.write("/etc/pnr/squashfs", "1234\n");
    EXPECT_EQ(ordinary::readLine("/etc/pnr/squashfs"), "1234\n");
    EXPECT_EQ(ordinary::sizeOf("/etc/pnr/squashfs"), 5);
    EXPECT_EQ(ordinary::countEntries("/etc/pnr"), 3);
}

TEST_F(SandboxTest, ItsOwnNamesStayAsTheyAre)
{
    sandbox.write("/tmp/file", "text");
    EXPECT_TRUE(ordinary::exists(sandbox.path("/tmp/file").c_str()));
}

TEST_F(SandboxTest, RelativeNamesStayInside)
{
    EXPECT_TRUE(ordinary::writeFile("relative", "text"));
    EXPECT_EQ(sandbox.read("relative"), "text");
}

TEST_F(SandboxTest, ANameInNoFolderOfTheCardEndsTheTest)
{
    EXPECT_DEATH(ordinary::exists("/usr/bin/env"), "it is in no folder of the card");
}

TEST_F(SandboxTest, ANameThatClimbsOutEndsTheTest)
{
    EXPECT_DEATH(ordinary::exists("../x"), "it is in no folder of the card");
    EXPECT_DEATH(ordinary::exists("/etc/../../x"), "it is in no folder of the card");
    EXPECT_FALSE(ordinary::exists("/etc/../tmp/x"));
    EXPECT_FALSE(ordinary::exists("x/../y"));
}

TEST_F(SandboxTest, ANameInItMayBeWrittenInOtherWays)
{
    const std::string root = sandbox.path("/tmp").substr(0, sandbox.path("/tmp").size() - 4);
    EXPECT_TRUE(sandbox.holds(root));
    EXPECT_TRUE(sandbox.holds(root + "//etc/./pnr/.hidden"));
    EXPECT_FALSE(sandbox.holds(root + "x/etc"));
    EXPECT_FALSE(sandbox.holds(root + "/etc/../../x"));
}

TEST_F(SandboxTest, HoldsNothingOfThisMachine)
{
    EXPECT_FALSE(ordinary::exists("/etc/passwd"));
    EXPECT_FALSE(ordinary::exists("/proc/uptime"));
    EXPECT_FALSE(ordinary::exists("/sys/class"));
}

TEST(SandboxLifeTest, LeavesNothingBehind)
{
    std::string root;
    {
        const Sandbox sandbox;
        root = sandbox.path("/tmp");
        EXPECT_TRUE(std::filesystem::exists(root));
    }
    EXPECT_FALSE(std::filesystem::exists(root));
}

TEST(SandboxLifeTest, ANameOfTheCardWithoutOneEndsTheTest)
{
    EXPECT_DEATH(ordinary::exists("/etc/passwd"), "the test has no sandbox");
}
