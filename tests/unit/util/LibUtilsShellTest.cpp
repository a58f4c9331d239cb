// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "support/RealShell.h"
#include "support/SystemTest.h"
#include "util/Hardened.h"
#include "util/Report.h"

// What a real /bin/sh and a real tar make of the commands. All files are relative names, which stay in the sandbox.

namespace
{

class LibUtilsShellTest : public SystemTest
{
protected:
    // Packs files with these names into an archive.
    void pack(const std::string& archive, const std::string& names)
    {
        ASSERT_EQ(LibUtils::executeCommand("mkdir packed && cd packed && touch " + names + " && tar -czf ../" +
                                           archive + " --owner=0 --group=0 " + names),
                  0);
    }

    RealShell real;
};

TEST_F(LibUtilsShellTest, ACommandThatExitsWithThreeGivesThree)
{
    EXPECT_EQ(LibUtils::executeCommand("exit 3"), 3);
}

TEST_F(LibUtilsShellTest, ACommandThatKillsItselfCountsAsASuccess)
{
    EXPECT_EQ(LibUtils::executeCommand("kill -9 $$"), 0);
}

TEST_F(LibUtilsShellTest, ACommandThatDoesNotExistGives127)
{
    CapturedOutput output;
    EXPECT_EQ(LibUtils::executeCommand("no-such-command-here"), 127);
}

TEST_F(LibUtilsShellTest, AWordIsAPatternOfFileNamesUnlessTheBuildIsHardened)
{
    sandbox.write("key.@of0.option", "");
    std::string output;
    EXPECT_EQ(LibUtils::executeCommandOutput("echo key.@of[0].option", output), 0);
    EXPECT_EQ(output, hardened ? "key.@of[0].option\n" : "key.@of0.option\n");
    EXPECT_EQ(LibUtils::executeCommand("test key.@of[0].option = key.@of0.option"), hardened ? 1 : 0);
}

TEST_F(LibUtilsShellTest, TheStandardOutputOfACommandIsAppended)
{
    CapturedOutput captured;
    std::string output = "zero ";
    EXPECT_EQ(LibUtils::executeCommandOutput("echo one; echo two >&2; exit 4", output), 4);
    EXPECT_EQ(output, "zero one\n");
}

TEST_F(LibUtilsShellTest, OutputLargerThanAPipeIsTakenWhole)
{
    std::string output;
    EXPECT_EQ(LibUtils::executeCommandOutput("head -c 200000 /dev/zero | tr '\\0' x", output), 0);
    EXPECT_EQ(output, std::string(200000, 'x'));
}

TEST_F(LibUtilsShellTest, ACommandKilledByASignalKeepsItsOutputAndCountsAsASuccess)
{
    std::string output;
    EXPECT_EQ(LibUtils::executeCommandOutput("echo part; kill -9 $$", output), 0);
    EXPECT_EQ(output, "part\n");
}

TEST_F(LibUtilsShellTest, BothStreamsGoToTheFile)
{
    std::string command = "(echo one; echo two >&2; exit 5)";
    EXPECT_EQ(LibUtils::executeCommandToFile(command, "out"), 5);
    EXPECT_EQ(sandbox.read("out"), "one\ntwo\n");
}

TEST_F(LibUtilsShellTest, TheFileStartsAnew)
{
    sandbox.write("out", "old\n");
    std::string command = "echo one";
    LibUtils::executeCommandToFile(command, "out");
    EXPECT_EQ(sandbox.read("out"), "one\n");
}

TEST_F(LibUtilsShellTest, TheFileIsContinued)
{
    sandbox.write("out", "old\n");
    std::string command = "(echo one; echo two >&2)";
    EXPECT_EQ(LibUtils::executeCommandAppendToFile(command, "out"), 0);
    EXPECT_EQ(sandbox.read("out"), "old\none\ntwo\n");
}

TEST_F(LibUtilsShellTest, AnArchiveIsUnpackedIntoTheDirectory)
{
    pack("a.tar.gz", "one two");
    sandbox.makeDirectory("target");
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("a.tar.gz", "target"), 0);
    EXPECT_TRUE(sandbox.exists("target/one"));
    EXPECT_TRUE(sandbox.exists("target/two"));
}

TEST_F(LibUtilsShellTest, TheAnnouncementStandsBeforeTheNamesThatTarPrints)
{
    pack("a.tar.gz", "one two");
    sandbox.makeDirectory("target");
    CapturedOutput output;
    LibUtils::extractArchive("a.tar.gz", "target");
    EXPECT_EQ(output.out(), "Extracting files from a.tar.gz to target\none\ntwo\n");
}

TEST_F(LibUtilsShellTest, AFileThatIsNoArchiveIsRefused)
{
    sandbox.write("a.tar.gz", "no archive");
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("a.tar.gz", "."), -1);
    EXPECT_TRUE(output.err().ends_with("Extracting files from archive failed\n"));
}

TEST_F(LibUtilsShellTest, AMissingArchiveIsRefused)
{
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("missing.tar.gz", "."), -1);
}

TEST_F(LibUtilsShellTest, AMissingDirectoryIsRefused)
{
    pack("a.tar.gz", "one");
    CapturedOutput output;
    EXPECT_EQ(LibUtils::extractArchive("a.tar.gz", "missing"), -1);
}

TEST_F(LibUtilsShellTest, AReportStandsBeforeTheOutputOfTheCommandThatFollows)
{
    CapturedOutput output;
    reportProgress("one");
    LibUtils::executeCommand("echo two");
    reportProgress("three");
    EXPECT_EQ(output.out(), "one\ntwo\nthree\n");
}

} // namespace
