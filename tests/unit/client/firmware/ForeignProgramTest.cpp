// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/ForeignProgram.h"

#include "ProgramsFixture.h"

namespace
{

using ForeignProgramTest = ProgramsFixture;

} // namespace

TEST_F(ForeignProgramTest, IsFoundInTheFoldersOfThePath)
{
    install("tool", "exit 0");
    EXPECT_EQ(findProgram("tool"), file("tool"));
    EXPECT_EQ(findProgram("other"), std::nullopt);
    const Environment path("PATH", "/nowhere::" + directory + ":.");
    EXPECT_EQ(findProgram("tool"), file("tool"));
    const Environment none("PATH", "");
    EXPECT_EQ(findProgram("tool"), std::nullopt);
}

TEST_F(ForeignProgramTest, IsNothingThatCannotBeRun)
{
    install("tool", "exit 0");
    std::filesystem::permissions(file("tool"), std::filesystem::perms::owner_read);
    std::filesystem::create_directory(file("folder"));
    EXPECT_EQ(findProgram("tool"), std::nullopt);
    EXPECT_EQ(findProgram("folder"), std::nullopt);
}

TEST_F(ForeignProgramTest, EndsWithItsStatus)
{
    install("tool", "exit 3");
    EXPECT_EQ(runToItsEnd(file("tool"), {}, file("complaints")), 3);
}

TEST_F(ForeignProgramTest, GetsItsWordsAsTheyAre)
{
    install("tool", "for word; do echo \"<$word>\" >&2; done");
    EXPECT_EQ(runToItsEnd(file("tool"), {"a b", "$(exit 1)", "", "*"}, file("complaints")), 0);
    EXPECT_EQ(read("complaints"), "<a b>\n<$(exit 1)>\n<>\n<*>\n");
}

TEST_F(ForeignProgramTest, ReadsAndPrintsNothing)
{
    install("tool", "read line && exit 1; echo printed");
    testing::internal::CaptureStdout();
    EXPECT_EQ(runToItsEnd(file("tool"), {}, file("complaints")), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(ForeignProgramTest, HasNoStatusIfItWasKilledOrIsNotThere)
{
    install("tool", "kill -9 $$");
    EXPECT_EQ(runToItsEnd(file("tool"), {}, file("complaints")), -1);
    EXPECT_EQ(runToItsEnd("/", {}, file("complaints")), -1);
}
