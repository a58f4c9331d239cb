// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "uci/Uci.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>
#include <memory>
#include <type_traits>

using UciTest = SystemTest;

static_assert(std::has_virtual_destructor_v<Uci>);

TEST_F(UciTest, AnObjectCanBeMadeAndDestroyedThoughItHoldsNothing)
{
    const std::unique_ptr<Uci> object = std::make_unique<Uci>();
    EXPECT_EQ(sizeof *object, sizeof(void*));
}

TEST_F(UciTest, TheToolIsQuietUnlessToldOtherwise)
{
    EXPECT_EQ(Uci::verbosity, 0);
}

TEST_F(UciTest, ExecuteGivesTheArgumentsToTheToolAsTheyStand)
{
    EXPECT_EQ(Uci::Execute("batch  <file; true"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci -q batch  <file; true"});
}

TEST_F(UciTest, GetWritesTheSettingIntoATemporaryFile)
{
    std::string value;
    Uci::Get("system.ntp.server", value);
    EXPECT_EQ(shell.commands(), Texts{"uci -q get system.ntp.server > /tmp/uci.tmp"});
}

TEST_F(UciTest, GetReplacesTheValueByTheSetting)
{
    uci.set("system.ntp.server", "10.1.2.3");
    std::string value = "old";
    EXPECT_EQ(Uci::Get("system.ntp.server", value), 0);
    EXPECT_EQ(value, "10.1.2.3");
}

TEST_F(UciTest, GetTakesTheFirstLineOnly)
{
    uci.set("network.lan.ipaddr", "10.1.2.3\n10.1.2.4");
    std::string value;
    EXPECT_EQ(Uci::Get("network.lan.ipaddr", value), 0);
    EXPECT_EQ(value, "10.1.2.3");
}

TEST_F(UciTest, GetOfAnEmptySettingIsAnEmptyValue)
{
    uci.set("system.ntp.server", "");
    std::string value = "old";
    EXPECT_EQ(Uci::Get("system.ntp.server", value), 0);
    EXPECT_EQ(value, "");
}

TEST_F(UciTest, GetOfAMissingKeyFailsSilentlyAndLeavesTheValue)
{
    CapturedOutput output;
    std::string value = "old";
    EXPECT_EQ(Uci::Get("system.ntp.server", value), -1);
    EXPECT_EQ(value, "old");
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(UciTest, GetDoesNotReadTheFileOfAToolThatFailed)
{
    sandbox.write("/tmp/uci.tmp", "another setting\n");
    std::string value;
    Uci::Get("system.ntp.server", value);
    EXPECT_TRUE(callsTo("fopen").empty());
}

TEST_F(UciTest, GetLeavesTheTemporaryFileBehind)
{
    uci.set("system.ntp.server", "10.1.2.3");
    std::string value;
    Uci::Get("system.ntp.server", value);
    EXPECT_EQ(sandbox.read("/tmp/uci.tmp"), "10.1.2.3\n");
}

TEST_F(UciTest, GetFailsWhenTheToolPrintsNothing)
{
    shell.answer("uci -q get system.ntp.server > /tmp/uci.tmp", 0, "");
    CapturedOutput output;
    std::string value = "old";
    EXPECT_EQ(Uci::Get("system.ntp.server", value), -1);
    EXPECT_EQ(value, "old");
    EXPECT_EQ(output.err(), errorText("fgets() failed or file is empty: ", 0) + "\n");
}

TEST_F(UciTest, GetFailsWhenTheTemporaryFileCannotBeRead)
{
    uci.set("system.ntp.server", "10.1.2.3");
    failNext("fopen", EACCES);
    CapturedOutput output;
    std::string value = "old";
    EXPECT_EQ(Uci::Get("system.ntp.server", value), -1);
    EXPECT_EQ(value, "old");
    EXPECT_EQ(output.err(), errorText("fopen() failed: ", EACCES) + "\n");
}

TEST_F(UciTest, SetStagesTheValue)
{
    EXPECT_EQ(Uci::Set("system.ntp.server", "10.0.0.1"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci -q set system.ntp.server=10.0.0.1"});
}

TEST_F(UciTest, SetOfAnEmptyValueEndsInTheEqualsSign)
{
    Uci::Set("system.ntp.server", "");
    EXPECT_EQ(shell.commands(), Texts{"uci -q set system.ntp.server="});
}

TEST_F(UciTest, SetQuotesNothing)
{
    Uci::Set("system.@system[0].hostname", "a b;c $d 'e'");
    EXPECT_EQ(shell.commands(), Texts{"uci -q set system.@system[0].hostname=a b;c $d 'e'"});
}

TEST_F(UciTest, SetFailsWhenTheToolFails)
{
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(Uci::Set("no.such.option", "1"), -1);
}

TEST_F(UciTest, DeleteNamesTheKey)
{
    EXPECT_EQ(Uci::Delete("network.lan.ipaddr"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci -q delete network.lan.ipaddr"});
}

TEST_F(UciTest, DeleteFailsWhenTheToolFails)
{
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(Uci::Delete("network.lan.ipaddr"), -1);
}

TEST_F(UciTest, ChangesNamesTheConfiguration)
{
    EXPECT_EQ(Uci::Changes("network"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci -q changes network"});
}

TEST_F(UciTest, ChangesFailsWhenTheToolFails)
{
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(Uci::Changes("network"), -1);
}

TEST_F(UciTest, CommitNamesTheConfiguration)
{
    EXPECT_EQ(Uci::Commit("network"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci -q commit network"});
}

TEST_F(UciTest, CommitFailsWhenTheToolFails)
{
    shell.answerNext(exitStatus(255));
    EXPECT_EQ(Uci::Commit("network"), -1);
}

TEST_F(UciTest, RevertNamesTheConfiguration)
{
    EXPECT_EQ(Uci::Revert("network"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci -q revert network"});
}

TEST_F(UciTest, RevertFailsWhenTheToolFails)
{
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(Uci::Revert("network"), -1);
}

TEST_F(UciTest, AnEmptyConfigurationNameLeavesABlankAtTheEnd)
{
    Uci::Changes("");
    Uci::Commit("");
    Uci::Revert("");
    EXPECT_EQ(shell.commands(), (Texts{"uci -q changes ", "uci -q commit ", "uci -q revert "}));
}

TEST_F(UciTest, ExportIsNotImplementedAndSaysSo)
{
    CapturedOutput output;
    EXPECT_EQ(Uci::Export(), -1);
    EXPECT_EQ(output.err(), "Export() not implemented yet\n");
}

TEST_F(UciTest, ImportIsNotImplementedAndSaysSo)
{
    CapturedOutput output;
    EXPECT_EQ(Uci::Import(), -1);
    EXPECT_EQ(output.err(), "Import() not implemented yet\n");
}

TEST_F(UciTest, ShowIsNotImplementedAndSaysSo)
{
    CapturedOutput output;
    EXPECT_EQ(Uci::Show(), -1);
    EXPECT_EQ(output.err(), "Show() not implemented yet\n");
}

TEST_F(UciTest, RenameIsNotImplementedAndSaysSo)
{
    CapturedOutput output;
    EXPECT_EQ(Uci::Rename(), -1);
    EXPECT_EQ(output.err(), "Rename() not implemented yet\n");
}

TEST_F(UciTest, WhatIsNotImplementedRunsNothingAndPrintsNothingOnStandardOutput)
{
    CapturedOutput output;
    Uci::Export();
    Uci::Import();
    Uci::Show();
    Uci::Rename();
    EXPECT_TRUE(shell.commands().empty());
    EXPECT_EQ(output.out(), "");
}
