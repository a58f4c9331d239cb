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

TEST_F(StagingCommands, getSeesAStagedValue)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "dhcp\n");
}

TEST_F(StagingCommands, aStagedValueIsNotInTheFile)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(config("network"), factory);
}

TEST_F(StagingCommands, theLastOfSeveralStagedValuesCounts)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"set", "network.lan.proto=none"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "none\n");
}

TEST_F(StagingCommands, setIntoAMissingSectionFails)
{
    EXPECT_EQ(uci({"set", "network.wan.proto=dhcp"}).errors, "uci: Invalid argument\n");
}

TEST_F(StagingCommands, setInAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"set", "wireless.lan.proto=dhcp"}).errors, "uci: Entry not found\n");
}

TEST_F(StagingCommands, setWithoutAValueFails)
{
    EXPECT_EQ(uci({"set", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommands, setMakesANewSection)
{
    output({"set", "network.wan=interface"});
    EXPECT_EQ(output({"get", "network.wan"}), "interface\n");
}

TEST_F(StagingCommands, setFillsAStagedSection)
{
    output({"set", "network.wan=interface"});
    output({"set", "network.wan.proto=dhcp"});
    EXPECT_EQ(output({"get", "network.wan.proto"}), "dhcp\n");
}

TEST_F(StagingCommands, setToAnEmptyValueDeletesTheOption)
{
    output({"set", "network.lan.proto="});
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommands, setOfAMissingOptionToAnEmptyValueIsNoError)
{
    EXPECT_EQ(output({"set", "network.lan.gateway="}), "");
}

TEST_F(StagingCommands, setToTheSameValueStagesNothing)
{
    output({"set", "network.lan.proto=static"});
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommands, setInAnAnonymousSectionIsFoundAgain)
{
    output({"set", "system.@system[0].hostname=card2"});
    EXPECT_EQ(output({"get", "system.@system[-1].hostname"}), "card2\n");
}

TEST_F(StagingCommands, deleteHidesAnOption)
{
    output({"delete", "network.lan.proto"});
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(StagingCommands, deleteHidesASection)
{
    output({"delete", "network.lan"});
    EXPECT_EQ(uci({"get", "network.lan"}).status, 1);
}

TEST_F(StagingCommands, deleteOfAMissingOptionFails)
{
    EXPECT_EQ(uci({"delete", "network.lan.gateway"}).errors, "uci: Entry not found\n");
}

TEST_F(StagingCommands, changesListsWhatIsStagedInOrder)
{
    output({"set", "network.lan.proto=it's"});
    output({"delete", "network.lan.dns"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='it'\\''s'\n-network.lan.dns\n");
}

TEST_F(StagingCommands, changesOfOneConfigurationLeavesOutTheOthers)
{
    output({"set", "network.lan.proto=dhcp"});
    EXPECT_EQ(output({"changes", "system"}), "");
}

TEST_F(StagingCommands, changesOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"changes", "wireless"}).status, 1);
}

TEST_F(StagingCommands, commitWritesTheFile)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "network"});
    EXPECT_EQ(config("network"), "\nconfig interface 'lan'\n\toption proto 'dhcp'\n\tlist dns 'x'\n\n");
}

TEST_F(StagingCommands, commitLeavesNothingStaged)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "network"});
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommands, commitOfNothingLeavesTheFileAsItIs)
{
    output({"commit", "network"});
    EXPECT_EQ(config("network"), factory);
}

TEST_F(StagingCommands, commitWithoutANameCommitsAll)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"set", "system.@system[0].hostname=card2"});
    output({"commit"});
    EXPECT_EQ(config("system"), "\nconfig system\n\toption hostname 'card2'\n\n");
    EXPECT_EQ(output({"changes"}), "");
}

TEST_F(StagingCommands, commitOfOneConfigurationLeavesTheOthersStaged)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"commit", "system"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='dhcp'\n");
}

TEST_F(StagingCommands, commitOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"commit", "wireless"}).status, 1);
}

TEST_F(StagingCommands, revertDropsTheChangesOfAConfiguration)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"revert", "network"});
    EXPECT_EQ(output({"get", "network.lan.proto"}), "static\n");
}

TEST_F(StagingCommands, revertOfOneConfigurationKeepsTheOthers)
{
    output({"set", "system.@system[0].hostname=card2"});
    output({"revert", "network"});
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card2\n");
}

TEST_F(StagingCommands, revertOfAnOptionKeepsTheOtherOptions)
{
    output({"set", "network.lan.proto=dhcp"});
    output({"delete", "network.lan.dns"});
    output({"revert", "network.lan.dns"});
    EXPECT_EQ(output({"changes"}), "network.lan.proto='dhcp'\n");
}

TEST_F(StagingCommands, revertFindsAnAnonymousSection)
{
    output({"set", "system.@system[0].hostname=card2"});
    output({"revert", "system.@system[0].hostname"});
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card1\n");
}

TEST_F(StagingCommands, revertOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"revert", "wireless"}).status, 1);
}

} // namespace
