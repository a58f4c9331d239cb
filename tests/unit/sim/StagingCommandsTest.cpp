// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "UciSandbox.h"

namespace
{

const std::string factory = "# made at the factory\nconfig interface 'lan'\n\toption proto 'static'\n\tlist dns 'x'\n";

class StagingCommandsTest : public UciSandbox
{
protected:
    StagingCommandsTest()
    {
        writeConfig("network", factory);
        writeConfig("system", "config system\n\toption hostname 'card1'\n");
    }
};

TEST_F(StagingCommandsTest, GetSeesAStagedValue)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "dhcp\n");
}

TEST_F(StagingCommandsTest, AStagedValueIsNotInTheFile)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(config("network"), factory);
}

TEST_F(StagingCommandsTest, TheLastOfSeveralStagedValuesCounts)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"set", "network.lan.proto=none"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "none\n");
}

TEST_F(StagingCommandsTest, SetIntoAMissingSectionFails)
{
    EXPECT_EQ(uci({"set", "network.wan.proto=dhcp"}).errors, "uci: Invalid argument\n");
}

TEST_F(StagingCommandsTest, SetInAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"set", "wireless.lan.proto=dhcp"}).errors, "uci: Entry not found\n");
}

TEST_F(StagingCommandsTest, SetWithoutAValueFails)
{
    EXPECT_EQ(uci({"set", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommandsTest, SetMakesANewSection)
{
    output({"set", "network.wan=interface"});
    EXPECT_EQ(output({"get", "network.wan"}), "interface\n");
}

TEST_F(StagingCommandsTest, SetFillsAStagedSection)
{
    output({"set", "network.wan=interface"});
    output({"set", "network.wan.proto=dhcp"});
    EXPECT_EQ(output({"get", "network.wan.proto"}), "dhcp\n");
}

TEST_F(StagingCommandsTest, SetToAnEmptyValueDeletesTheOption)
{
    output({"set", "network.lan.proto="});
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommandsTest, SetOfAMissingOptionToAnEmptyValueIsNoError)
{
    EXPECT_EQ(output({"set", "network.lan.gateway="}), "");
}

TEST_F(StagingCommandsTest, SetInAMissingSectionToAnEmptyValueFails)
{
    EXPECT_EQ(uci({"set", "network.wan.gateway="}).status, 1);
}

TEST_F(StagingCommandsTest, SetOfTheTypeOfNoSectionIsNoError)
{
    EXPECT_EQ(output({"set", "network.@interface[7]=bridge"}), "");
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommandsTest, SetToTheSameValueStagesNothing)
{
    output({"set", "network.lan.proto=static"});
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommandsTest, SetInAnAnonymousSectionIsFoundAgain)
{
    output({"set", "system.@system[0].hostname=card2"});
    EXPECT_EQ(output({"get", "system.@system[-1].hostname"}), "card2\n");
}

TEST_F(StagingCommandsTest, DeleteHidesAnOption)
{
    output({"delete", "network.lan.proto"});
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommandsTest, DeleteHidesASection)
{
    output({"delete", "network.lan"});
    EXPECT_EQ(uci({"get", "network.lan"}).status, 1);
}

TEST_F(StagingCommandsTest, DeleteOfAMissingOptionFails)
{
    EXPECT_EQ(uci({"delete", "network.lan.gateway"}).errors, "uci: Entry not found\n");
}

TEST_F(StagingCommandsTest, ChangesListsWhatIsStagedInOrder)
{
    output({"set", "network.lan.proto=it's"});
    output({"delete", "network.lan.dns"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='it'\\''s'\n-network.lan.dns\n");
}

TEST_F(StagingCommandsTest, ChangesOfOneConfigurationLeavesOutTheOthers)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(output({"changes", "system"}), "");
}

TEST_F(StagingCommandsTest, TheToolOf2014ListsChangesWithoutQuotes)
{
    output({"set", "network.lan.proto=dhcp"});
    const ToolResult old = runTool({"-c", configs(), "-t", staged(), "changes"}, Generation::of2014);
    EXPECT_EQ(old.output, "network.lan.proto=dhcp\n");
}

TEST_F(StagingCommandsTest, ChangesOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"changes", "wireless"}).status, 1);
}

TEST_F(StagingCommandsTest, CommitWritesTheFile)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "network"});
    EXPECT_EQ(config("network"), "\nconfig interface 'lan'\n\toption proto 'dhcp'\n\tlist dns 'x'\n\n");
}

TEST_F(StagingCommandsTest, CommitLeavesNothingStaged)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "network"});
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommandsTest, CommitOfNothingLeavesTheFileAsItIs)
{
    output({"commit", "network"});
    EXPECT_EQ(config("network"), factory);
}

TEST_F(StagingCommandsTest, CommitWithoutANameCommitsAll)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"set", "system.@system[0].hostname=card2"});
    output({"commit"});
    EXPECT_EQ(config("system"), "\nconfig system\n\toption hostname 'card2'\n\n");
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommandsTest, CommitOfOneConfigurationLeavesTheOthersStaged)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "system"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='dhcp'\n");
}

TEST_F(StagingCommandsTest, CommitOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"commit", "wireless"}).status, 1);
}

TEST_F(StagingCommandsTest, CommitWithoutANameSkipsABrokenFile)
{
    output({"set", "system.@system[0].hostname=card2"});
    writeConfig("network", "rubbish\n");
    EXPECT_EQ(uci({"commit"}).status, 0);
    EXPECT_EQ(config("network"), "rubbish\n");
    EXPECT_EQ(config("system"), "\nconfig system\n\toption hostname 'card2'\n\n");
}

TEST_F(StagingCommandsTest, CommitWithTheNameOfABrokenFileFails)
{
    writeConfig("network", "rubbish\n");
    EXPECT_EQ(uci({"commit", "network"}).status, 1);
}

TEST_F(StagingCommandsTest, RevertDropsTheChangesOfAConfiguration)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"revert", "network"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "static\n");
}

TEST_F(StagingCommandsTest, RevertOfOneConfigurationKeepsTheOthers)
{
    output({"set", "system.@system[0].hostname=card2"});
    output({"revert", "network"});
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card2\n");
}

TEST_F(StagingCommandsTest, RevertOfAnOptionKeepsTheOtherOptions)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"delete", "network.lan.dns"});
    output({"revert", "network.lan.dns"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='dhcp'\n");
}

TEST_F(StagingCommandsTest, RevertFindsAnAnonymousSection)
{
    output({"set", "system.@system[0].hostname=card2"});
    output({"revert", "system.@system[0].hostname"});
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card1\n");
}

TEST_F(StagingCommandsTest, RevertOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"revert", "wireless"}).status, 1);
}

} // namespace
