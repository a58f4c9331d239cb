// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "UciSandbox.h"

namespace
{

class ReadingCommandsTest : public UciSandbox
{
protected:
    ReadingCommandsTest()
    {
        writeConfig("system", "config system\n\toption hostname 'card1'\n"
                              "config timeserver 'ntp'\n\tlist server 'a b'\n\tlist server c\n");
    }
};

TEST_F(ReadingCommandsTest, GetPrintsAValue)
{
    EXPECT_EQ(output({"get", "system.@system[0].hostname"}), "card1\n");
}

TEST_F(ReadingCommandsTest, GetPrintsAListOnOneLineWithItsBlanksQuoted)
{
    EXPECT_EQ(output({"get", "system.ntp.server"}), "'a b' c\n");
}

TEST_F(ReadingCommandsTest, GetOfAConfigurationPrintsNothing)
{
    EXPECT_EQ(output({"get", "system"}), "");
}

TEST_F(ReadingCommandsTest, GetOfASectionPrintsItsType)
{
    EXPECT_EQ(output({"get", "system.ntp"}), "timeserver\n");
}

TEST_F(ReadingCommandsTest, GetOfAMissingOptionFails)
{
    EXPECT_EQ(uci({"get", "system.ntp.port"}).status, 1);
}

TEST_F(ReadingCommandsTest, GetOfAMissingSectionFails)
{
    EXPECT_EQ(uci({"get", "system.nobody.port"}).status, 1);
}

TEST_F(ReadingCommandsTest, GetOfAMissingConfigurationFails)
{
    EXPECT_EQ(uci({"get", "network.lan.proto"}).status, 1);
}

TEST_F(ReadingCommandsTest, GetPrintsNothingWhenItFails)
{
    EXPECT_EQ(uci({"get", "system.ntp.port"}).output, "");
}

TEST_F(ReadingCommandsTest, GetOfABrokenFileFailsWithItsLine)
{
    writeConfig("broken", "\nfoo\n");
    EXPECT_EQ(uci({"get", "broken.a.b"}).errors, "uci: Parse error (invalid command) at line 2\n");
}

TEST_F(ReadingCommandsTest, ShowPrintsAWholeConfiguration)
{
    EXPECT_EQ(output({"show", "system"}), "system.@system[0]=system\n"
                                          "system.@system[0].hostname='card1'\n"
                                          "system.ntp=timeserver\n"
                                          "system.ntp.server='a b' 'c'\n");
}

TEST_F(ReadingCommandsTest, ShowPrintsOneSection)
{
    EXPECT_EQ(output({"show", "system.ntp"}), "system.ntp=timeserver\nsystem.ntp.server='a b' 'c'\n");
}

TEST_F(ReadingCommandsTest, ShowPrintsOneOption)
{
    EXPECT_EQ(output({"show", "system.@system[-1].hostname"}), "system.cfg01e48a.hostname='card1'\n");
}

TEST_F(ReadingCommandsTest, ShowWithoutANamePrintsAllConfigurationsInOrder)
{
    writeConfig("network", "config interface 'lan'\n");
    EXPECT_EQ(output({"show"}).substr(0, 22), "network.lan=interface\n");
}

TEST_F(ReadingCommandsTest, ShowOfAMissingSectionFails)
{
    EXPECT_EQ(uci({"show", "system.nobody"}).status, 1);
}

TEST_F(ReadingCommandsTest, HiddenFilesAreNoConfigurations)
{
    writeConfig(".backup", "rubbish\n");
    EXPECT_EQ(uci({"show"}).errors, "");
    ::unlink((configs() + "/.backup").c_str());
}

} // namespace
