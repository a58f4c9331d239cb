// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>

#include <fcntl.h>

namespace
{

using LibUtilsCommandsTest = SystemTest;

} // namespace

TEST_F(LibUtilsCommandsTest, ExecuteCommandGivesTheCommandToTheShellAsItStands)
{
    LibUtils::executeCommand("echo 'a  b' | tr a \"$x\"; true");
    EXPECT_EQ(shell.commands(), Texts{"echo 'a  b' | tr a \"$x\"; true"});
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandReturnsTheExitStatus)
{
    shell.answer("false3", exitStatus(3));
    EXPECT_EQ(LibUtils::executeCommand("false3"), 3);
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandReturnsTheLargestExitStatusAsAPositiveNumber)
{
    shell.answerNext(exitStatus(255));
    EXPECT_EQ(LibUtils::executeCommand("fails"), 255);
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandTakesACommandKilledByASignalForASuccess)
{
    shell.answerNext(killedBy(9));
    EXPECT_EQ(LibUtils::executeCommand("killed"), 0);
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandTakesACoreDumpForASuccess)
{
    shell.answerNext(killedBy(11) | 0x80);
    EXPECT_EQ(LibUtils::executeCommand("dumped"), 0);
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandWithoutAShellFailsAndTellsWhy)
{
    shell.failToStart(ENOMEM);
    CapturedOutput output;
    EXPECT_EQ(LibUtils::executeCommand("ls"), -1);
    EXPECT_EQ(output.err(), errorText("system() FAILED: ", ENOMEM) + "\n");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandSaysNothingAboutACommandThatFails)
{
    shell.answerNext(exitStatus(1));
    CapturedOutput output;
    LibUtils::executeCommand("fails");
    EXPECT_EQ(output.out() + output.err(), "");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputAppendsWhatTheCommandPrints)
{
    shell.answer("list", 0, "one\ntwo\n");
    std::string output = "zero\n";
    EXPECT_EQ(LibUtils::executeCommandOutput("list", output), 0);
    EXPECT_EQ(output, "zero\none\ntwo\n");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputTakesALineLongerThanItsBuffer)
{
    const std::string longLine(5000, 'x');
    shell.answer("list", 0, longLine + "\nend");
    std::string output;
    LibUtils::executeCommandOutput("list", output);
    EXPECT_EQ(output, longLine + "\nend");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputReadsInPiecesOfUpTo1023Bytes)
{
    shell.answer("list", 0, std::string(1024, 'x'));
    std::string output;
    LibUtils::executeCommandOutput("list", output);
    EXPECT_EQ(callsTo("fgets"), (Texts{"1024", "1024", "1024"}));
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputReturnsTheExitStatus)
{
    shell.answer("list", exitStatus(3), "part");
    std::string output;
    EXPECT_EQ(LibUtils::executeCommandOutput("list", output), 3);
    EXPECT_EQ(output, "part");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputTakesACommandKilledByASignalForASuccess)
{
    shell.answerNext(killedBy(15));
    std::string output;
    EXPECT_EQ(LibUtils::executeCommandOutput("list", output), 0);
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputFailsWhenThePipeCannotBeOpened)
{
    shell.failToStart(EMFILE);
    CapturedOutput captured;
    std::string output = "kept";
    EXPECT_EQ(LibUtils::executeCommandOutput("list", output), -1);
    EXPECT_EQ(output, "kept");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputTellsThatThePipeCannotBeOpened)
{
    shell.failToStart(EMFILE);
    CapturedOutput captured;
    std::string output;
    LibUtils::executeCommandOutput("list", output);
    EXPECT_EQ(captured.err(), errorText("popen() FAILED: ", EMFILE) + "\n");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputFailsWhenTheStatusIsLostInTheWordsOfExecuteCommand)
{
    shell.answer("list", 0, "text");
    failNext("pclose", ECHILD);
    CapturedOutput captured;
    std::string output;
    EXPECT_EQ(LibUtils::executeCommandOutput("list", output), -1);
    EXPECT_EQ(captured.err(), errorText("system() FAILED: ", ECHILD) + "\n");
    EXPECT_EQ(output, "text");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandOutputKeepsItsPipeFromOtherCommands)
{
    std::string output;
    LibUtils::executeCommandOutput("list", output);
    EXPECT_EQ(callsTo("fcntl"), Texts{std::to_string(F_SETFD) + " " + std::to_string(FD_CLOEXEC)});
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandToFileSendsBothStreamsToTheFile)
{
    std::string command = "ls";
    LibUtils::executeCommandToFile(command, "/tmp/x");
    EXPECT_EQ(shell.commands(), Texts{"ls > /tmp/x 2>&1"});
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandToFileLeavesTheRedirectionInTheCallersCommand)
{
    std::string command = "ls";
    LibUtils::executeCommandToFile(command, "/tmp/x");
    EXPECT_EQ(command, "ls > /tmp/x 2>&1");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandToFileReturnsTheExitStatus)
{
    shell.answerNext(exitStatus(2));
    std::string command = "ls";
    EXPECT_EQ(LibUtils::executeCommandToFile(command, "/tmp/x"), 2);
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandAppendToFileContinuesTheFileWithBothStreams)
{
    std::string command = "ls";
    LibUtils::executeCommandAppendToFile(command, "/tmp/x");
    EXPECT_EQ(shell.commands(), Texts{"ls >> /tmp/x 2>&1"});
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandAppendToFileLeavesTheRedirectionInTheCallersCommand)
{
    std::string command = "ls";
    LibUtils::executeCommandAppendToFile(command, "/tmp/x");
    EXPECT_EQ(command, "ls >> /tmp/x 2>&1");
}

TEST_F(LibUtilsCommandsTest, ExecuteCommandAppendToFileFailsWithoutAShell)
{
    shell.failToStart(EAGAIN);
    CapturedOutput output;
    std::string command = "ls";
    EXPECT_EQ(LibUtils::executeCommandAppendToFile(command, "/tmp/x"), -1);
    EXPECT_EQ(output.err(), errorText("system() FAILED: ", EAGAIN) + "\n");
}

TEST_F(LibUtilsCommandsTest, ExtractArchiveRunsTar)
{
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("firmware.tar.gz", "."), 0);
    EXPECT_EQ(shell.commands(), Texts{"tar -xzvf firmware.tar.gz -C ."});
}

TEST_F(LibUtilsCommandsTest, ExtractArchiveSaysOnStandardOutputWhatItDoes)
{
    CapturedOutput output;
    LibUtils::extractArchive("firmware.tar.gz", "/tmp/upgrade");
    EXPECT_EQ(output.out(), "Extracting files from firmware.tar.gz to /tmp/upgrade\n");
    EXPECT_EQ(output.err(), "");
}

TEST_F(LibUtilsCommandsTest, ExtractArchiveFailsWhenTarFails)
{
    shell.answerNext(exitStatus(2));
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("a", "b"), -1);
    EXPECT_EQ(output.err(), "Extracting files from archive failed\n");
}

TEST_F(LibUtilsCommandsTest, ExtractArchiveFailsWhenASignalKillsTar)
{
    shell.answerNext(killedBy(9));
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("a", "b"), -1);
    EXPECT_EQ(output.err(), "Extracting files from archive failed\n");
}

TEST_F(LibUtilsCommandsTest, ExtractArchiveWithoutAShellFailsWithItsOwnMessageOnly)
{
    shell.failToStart(ENOMEM);
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("a", "b"), -1);
    EXPECT_EQ(output.err(), "Extracting files from archive failed\n");
}
