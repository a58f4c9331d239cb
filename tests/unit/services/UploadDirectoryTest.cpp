// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/UploadDirectory.h"
#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>

using UploadDirectoryTest = SystemTest;

TEST_F(UploadDirectoryTest, IsMadeAnewForRootAndEntered)
{
    sandbox.makeDirectory("/tmp/upgrade");
    EXPECT_EQ(renewUploadDirectory(), 0);
    EXPECT_EQ(orderOf({"system", "chdir"}),
              (Texts{"system: rm -rf /tmp/upgrade && mkdir -m 700 /tmp/upgrade", "chdir: /tmp/upgrade"}));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UploadDirectoryTest, AnyFailureOfTheCommandIsAWarning)
{
    shell.answerNext(killedBy(9));
    EXPECT_EQ(renewUploadDirectory(), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, "Emptying /tmp/upgrade FAILED"}}));
    EXPECT_TRUE(callsTo("chdir").empty());
}

TEST_F(UploadDirectoryTest, ADirectoryThatCannotBeEnteredIsAWarning)
{
    failNext("chdir", EACCES);
    EXPECT_EQ(renewUploadDirectory(), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("chdir() failed: ", EACCES)}}));
}
