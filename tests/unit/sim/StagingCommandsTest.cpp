// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "UciSandbox.h"

namespace
{

const std::string factory = "# made at the factory\nconfig interface 'lan'\n\toption proto 'static'\n\tlist dns 'x'\n";

class StagingCommands : public UciSandbox
{
protected:
    StagingCommands()
    {
        writeConfig("network", factory);
        writeConfig("system", "config system\n\toption hostname 'card1'\n");
    }
};

TEST_F(StagingCommands, GetSeesAStagedValue)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "dhcp\n");
}

TEST_F(StagingCommands, AStagedValueIsNotInTheFile)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(config("network"), factory);
}

TEST_F(StagingCommands, TheLastOfSeveralStagedValuesCounts)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"set", "network.lan.proto=none"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "none\n");
}

TEST_F(StagingCommands, SetIntoAMissingSectionFails)
{
    EXPECT_EQ(uci({"set", "network.wan.proto=dhcp"}).errors, "uci: Invalid argument\n");
}

TEST_F(StagingCommands, SetInAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"set", "wireless.lan.proto=dhcp"}).errors, "uci: Entry not found\n");
}

TEST_F(StagingCommands, SetWithoutAValueFails)
{
    EXPECT_EQ(uci({"set", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommands, SetMakesANewSection)
{
    output({"set", "network.wan=interface"});
    EXPECT_EQ(output({"get", "network.wan"}), "interface\n");
}

TEST_F(StagingCommands, SetFillsAStagedSection)
{
    output({"set", "network.wan=interface"});
    output({"set", "network.wan.proto=dhcp"});
    EXPECT_EQ(output({"get", "network.wan.proto"}), "dhcp\n");
}

TEST_F(StagingCommands, SetToAnEmptyValueDeletesTheOption)
{
    output({"set", "network.lan.proto="});
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommands, SetOfAMissingOptionToAnEmptyValueIsNoError)
{
    EXPECT_EQ(output({"set", "network.lan.gateway="}), "");
}

TEST_F(StagingCommands, SetInAMissingSectionToAnEmptyValueFails)
{
    EXPECT_EQ(uci({"set", "network.wan.gateway="}).status, 1);
}

TEST_F(StagingCommands, SetOfTheTypeOfNoSectionIsNoError)
{
    EXPECT_EQ(output({"set", "network.@interface[7]=bridge"}), "");
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommands, SetToTheSameValueStagesNothing)
{
    output({"set", "network.lan.proto=static"});
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommands, SetInAnAnonymousSectionIsFoundAgain)
{
    output({"set", "system.@system[0].hostname=card2"});
    EXPECT_EQ(output({"get", "system.@system[-1].hostname"}), "card2\n");
}

TEST_F(StagingCommands, DeleteHidesAnOption)
{
    output({"delete", "network.lan.proto"});
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommands, DeleteHidesASection)
{
    output({"delete", "network.lan"});
    EXPECT_EQ(uci({"get", "network.lan"}).status, 1);
}

TEST_F(StagingCommands, DeleteOfAMissingOptionFails)
{
    EXPECT_EQ(uci({"delete", "network.lan.gateway"}).errors, "uci: Entry not found\n");
}

TEST_F(StagingCommands, ChangesListsWhatIsStagedInOrder)
{
    output({"set", "network.lan.proto=it's"});
    output({"delete", "network.lan.dns"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='it'\\''s'\n-network.lan.dns\n");
}

TEST_F(StagingCommands, ChangesOfOneConfigurationLeavesOutTheOthers)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(output({"changes", "system"}), "");
}

TEST_F(StagingCommands, TheToolOf2014ListsChangesWithoutQuotes)
{
    output({"set", "network.lan.proto=dhcp"});
    const ToolResult old = runTool({"-c", configs(), "-t", staged(), "changes"}, Generation::of2014);
    EXPECT_EQ(old.output, "network.lan.proto=dhcp\n");
}

TEST_F(StagingCommands, ChangesOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"changes", "wireless"}).status, 1);
}

TEST_F(StagingCommands, CommitWritesTheFile)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "network"});
    EXPECT_EQ(config("network"), "\nconfig interface 'lan'\n\toption proto 'dhcp'\n\tlist dns 'x'\n\n");
}

TEST_F(StagingCommands, CommitLeavesNothingStaged)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "network"});
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommands, CommitOfNothingLeavesTheFileAsItIs)
{
    output({"commit", "network"});
    EXPECT_EQ(config("network"), factory);
}

TEST_F(StagingCommands, CommitWithoutANameCommitsAll)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"set", "system.@system[0].hostname=card2"});
    output({"commit"});
    EXPECT_EQ(config("system"), "\nconfig system\n\toption hostname 'card2'\n\n");
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommands, CommitOfOneConfigurationLeavesTheOthersStaged)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "system"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='dhcp'\n");
}

TEST_F(StagingCommands, CommitOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"commit", "wireless"}).status, 1);
}

TEST_F(StagingCommands, CommitWithoutANameSkipsABrokenFile)
{
    output({"set", "system.@system[0].hostname=card2"});
    writeConfig("network", "rubbish\n");
    EXPECT_EQ(uci({"commit"}).status, 0);
    EXPECT_EQ(config("network"), "rubbish\n");
    EXPECT_EQ(config("system"), "\nconfig system\n\toption hostname 'card2'\n\n");
}

TEST_F(StagingCommands, CommitWithTheNameOfABrokenFileFails)
{
    writeConfig("network", "rubbish\n");
    EXPECT_EQ(uci({"commit", "network"}).status, 1);
}

TEST_F(StagingCommands, RevertDropsTheChangesOfAConfiguration)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"revert", "network"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "static\n");
}

TEST_F(StagingCommands, RevertOfOneConfigurationKeepsTheOthers)
{
    output({"set", "system.@system[0].hostname=card2"});
    output({"revert", "network"});
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card2\n");
}

TEST_F(StagingCommands, RevertOfAnOptionKeepsTheOtherOptions)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"delete", "network.lan.dns"});
    output({"revert", "network.lan.dns"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='dhcp'\n");
}

TEST_F(StagingCommands, RevertFindsAnAnonymousSection)
{
    output({"set", "system.@system[0].hostname=card2"});
    output({"revert", "system.@system[0].hostname"});
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card1\n");
}

TEST_F(StagingCommands, RevertOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"revert", "wireless"}).status, 1);
}

} // namespace
