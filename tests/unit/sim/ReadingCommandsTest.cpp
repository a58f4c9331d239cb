// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "UciSandbox.h"

namespace
{

class ReadingCommands : public UciSandbox
{
protected:
    ReadingCommands()
    {
        writeConfig("system", "config system\n\toption hostname 'card1'\n"
                              "config timeserver 'ntp'\n\tlist server 'a b'\n\tlist server c\n");
    }
};

TEST_F(ReadingCommands, getPrintsAValue)
{
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card1\n");
}

TEST_F(ReadingCommands, getPrintsAListOnOneLine)
{
    EXPECT_EQ(output({"get", "system.ntp.server"}), "a b c\n");
}

TEST_F(ReadingCommands, getOfASectionPrintsItsType)
{
    EXPECT_EQ(output({"get", "system.ntp"}), "timeserver\n");
}

TEST_F(ReadingCommands, getOfAMissingOptionFails)
{
    EXPECT_EQ(uci({"get", "system.ntp.port"}).status, 1);
}

TEST_F(ReadingCommands, getOfAMissingSectionFails)
{
    EXPECT_EQ(uci({"get", "system.nobody.port"}).status, 1);
}

TEST_F(ReadingCommands, getOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(ReadingCommands, getPrintsNothingWhenItFails)
{
    EXPECT_EQ(uci({"get", "system.ntp.port"}).output, "");
}

TEST_F(ReadingCommands, getOfABrokenFileFailsWithItsLine)
{
    writeConfig("broken", "\nfoo\n");
    EXPECT_EQ(uci({"get", "broken.a.b"}).errors, "uci: Parse error (invalid command) at line 2\n");
}

TEST_F(ReadingCommands, showPrintsAWholeConfiguration)
{
    EXPECT_EQ(output({"show", "system"}), "system.@system[0]=system\n"
                                          "system.@system[0].hostname='card1'\n"
                                          "system.ntp=timeserver\n"
                                          "system.ntp.server='a b' 'c'\n");
}

TEST_F(ReadingCommands, showPrintsOneSection)
{
    EXPECT_EQ(output({"show", "system.ntp"}), "system.ntp=timeserver\nsystem.ntp.server='a b' 'c'\n");
}

TEST_F(ReadingCommands, showPrintsOneOption)
{
    EXPECT_EQ(output({"show", "system.@system[-1].hostname"}), "system.@system[0].hostname='card1'\n");
}

TEST_F(ReadingCommands, showWithoutANamePrintsAllConfigurationsInOrder)
{
    writeConfig("network", "config interface 'lan'\n");
    EXPECT_EQ(output({"show"}).substr(0, 22), "network.lan=interface\n");
}

TEST_F(ReadingCommands, showOfAMissingSectionFails)
{
    EXPECT_EQ(uci({"show", "system.nobody"}).status, 1);
}

TEST_F(ReadingCommands, hiddenFilesAreNoConfigurations)
{
    writeConfig(".backup", "rubbish\n");
    EXPECT_EQ(uci({"show"}).status, 0);
    ::unlink((configs() + "/.backup").c_str());
}

} // namespace
