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

TEST_F(ReadingCommands, GetPrintsAValue)
{
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card1\n");
}

TEST_F(ReadingCommands, GetPrintsAListOnOneLineWithItsBlanksQuoted)
{
    EXPECT_EQ(output({"get", "system.ntp.server"}), "'a b' c\n");
}

TEST_F(ReadingCommands, GetOfAConfigurationPrintsNothing)
{
    EXPECT_EQ(output({"get", "system"}), "");
}

TEST_F(ReadingCommands, GetOfASectionPrintsItsType)
{
    EXPECT_EQ(output({"get", "system.ntp"}), "timeserver\n");
}

TEST_F(ReadingCommands, GetOfAMissingOptionFails)
{
    EXPECT_EQ(uci({"get", "system.ntp.port"}).status, 1);
}

TEST_F(ReadingCommands, GetOfAMissingSectionFails)
{
    EXPECT_EQ(uci({"get", "system.nobody.port"}).status, 1);
}

TEST_F(ReadingCommands, GetOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(ReadingCommands, GetPrintsNothingWhenItFails)
{
    EXPECT_EQ(uci({"get", "system.ntp.port"}).output, "");
}

TEST_F(ReadingCommands, GetOfABrokenFileFailsWithItsLine)
{
    writeConfig("broken", "\nfoo\n");
    EXPECT_EQ(uci({"get", "broken.a.b"}).errors, "uci: Parse error (invalid command) at line 2\n");
}

TEST_F(ReadingCommands, ShowPrintsAWholeConfiguration)
{
    EXPECT_EQ(output({"show", "system"}), "system.@system[0]=system\n"
                                          "system.@system[0].hostname='card1'\n"
                                          "system.ntp=timeserver\n"
                                          "system.ntp.server='a b' 'c'\n");
}

TEST_F(ReadingCommands, ShowPrintsOneSection)
{
    EXPECT_EQ(output({"show", "system.ntp"}), "system.ntp=timeserver\nsystem.ntp.server='a b' 'c'\n");
}

TEST_F(ReadingCommands, ShowPrintsOneOption)
{
    EXPECT_EQ(output({"show", "system.@system[-1].hostname"}), "system.cfg01e48a.hostname='card1'\n");
}

TEST_F(ReadingCommands, ShowWithoutANamePrintsAllConfigurationsInOrder)
{
    writeConfig("network", "config interface 'lan'\n");
    EXPECT_EQ(output({"show"}).substr(0, 22), "network.lan=interface\n");
}

TEST_F(ReadingCommands, ShowOfAMissingSectionFails)
{
    EXPECT_EQ(uci({"show", "system.nobody"}).status, 1);
}

TEST_F(ReadingCommands, HiddenFilesAreNoConfigurations)
{
    writeConfig(".backup", "rubbish\n");
    EXPECT_EQ(uci({"show"}).errors, "");
    ::unlink((configs() + "/.backup").c_str());
}

} // namespace
