// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/StagingMarker.h"
#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>

namespace
{

constexpr const char* marker = "/var/tarveld.staging";

class StagingMarkerTest : public SystemTest
{
protected:
    StagingMarkerTest() { sandbox.makeDirectory("/var"); }
};

} // namespace

TEST_F(StagingMarkerTest, TheFileIsThereAsLongAsTheMarker)
{
    {
        const StagingMarker staging;
        EXPECT_TRUE(sandbox.exists(marker));
    }
    EXPECT_FALSE(sandbox.exists(marker));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(StagingMarkerTest, AFileThatCannotBeMadeIsAWarning)
{
    failNext("fopen", EROFS);
    const StagingMarker staging;
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("fopen() failed: ", EROFS)}}));
}

TEST_F(StagingMarkerTest, LeftSettingsAreRevertedOnce)
{
    sandbox.write(marker, "");
    revertLeftSettings();
    revertLeftSettings();
    EXPECT_EQ(shell.commands(), Texts{"uci -q revert network"});
    EXPECT_EQ(log.lines(), (Lines{{4, "Network settings were left staged, revert them"}}));
}

TEST_F(StagingMarkerTest, WithoutAFileNothingIsReverted)
{
    revertLeftSettings();
    EXPECT_TRUE(shell.commands().empty());
    EXPECT_TRUE(log.lines().empty());
}
