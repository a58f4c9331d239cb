// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <dirent.h>

using LibUtilsFilesTest = SystemTest;

namespace
{

// What readFirstLine makes of a file with this content.
std::string firstLineOf(const Sandbox& sandbox, std::string_view content)
{
    sandbox.write("/tmp/file", content);
    std::string value = "old";
    EXPECT_EQ(LibUtils::readFirstLine(value, "/tmp/file"), 0);
    return value;
}

int filtered(const char* name)
{
    dirent entry = {};
    std::strcpy(entry.d_name, name);
    return LibUtils::directoryEntryFilter(&entry);
}

} // namespace

TEST_F(LibUtilsFilesTest, ReadFirstLineReplacesTheValueByTheFirstLine)
{
    EXPECT_EQ(firstLineOf(sandbox, "first\nsecond\n"), "first");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineTakesALineWithoutNewlineWhole)
{
    EXPECT_EQ(firstLineOf(sandbox, "abc"), "abc");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineKeepsTheCarriageReturn)
{
    EXPECT_EQ(firstLineOf(sandbox, "abc\r\n"), "abc\r");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineOfAnEmptyLineIsAnEmptyValue)
{
    EXPECT_EQ(firstLineOf(sandbox, "\nsecond\n"), "");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineCutsALineAfter1023Bytes)
{
    EXPECT_EQ(firstLineOf(sandbox, std::string(2000, 'x') + "\n"), std::string(1023, 'x'));
}

TEST_F(LibUtilsFilesTest, ReadFirstLineTakesALineOf1023BytesWhole)
{
    EXPECT_EQ(firstLineOf(sandbox, std::string(1023, 'x') + "\n"), std::string(1023, 'x'));
}

TEST_F(LibUtilsFilesTest, ReadFirstLineEndsAtANul)
{
    EXPECT_EQ(firstLineOf(sandbox, std::string_view("ab\0cd\n", 6)), "ab");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineKeepsHighBytes)
{
    EXPECT_EQ(firstLineOf(sandbox, "\xC3\xA9\xFF\n"), "\xC3\xA9\xFF");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineOfAMissingFileFailsAndTellsWhy)
{
    CapturedOutput output;
    std::string value = "old";
    EXPECT_EQ(LibUtils::readFirstLine(value, "/tmp/missing"), -1);
    EXPECT_EQ(output.err(), errorText("fopen() failed: ", ENOENT) + "\n");
    EXPECT_EQ(value, "old");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineOfAnEmptyFileFailsWithoutAnOlderError)
{
    sandbox.write("/tmp/empty", "");
    CapturedOutput output;
    std::string value = "old";
    errno = ENOENT;
    EXPECT_EQ(LibUtils::readFirstLine(value, "/tmp/empty"), -1);
    EXPECT_EQ(output.err(), errorText("fgets() failed or file is empty: ", 0) + "\n");
    EXPECT_EQ(value, "old");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineTellsWhyAReadFails)
{
    sandbox.write("/tmp/file", "text");
    failNext("fgets", EIO);
    CapturedOutput output;
    std::string value;
    EXPECT_EQ(LibUtils::readFirstLine(value, "/tmp/file"), -1);
    EXPECT_EQ(output.err(), errorText("fgets() failed or file is empty: ", EIO) + "\n");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineOfADirectoryFailsInTheRead)
{
    sandbox.makeDirectory("/tmp/directory");
    CapturedOutput output;
    std::string value;
    EXPECT_EQ(LibUtils::readFirstLine(value, "/tmp/directory"), -1);
    EXPECT_EQ(output.err(), errorText("fgets() failed or file is empty: ", EISDIR) + "\n");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineStaysGoodWhenTheCloseFails)
{
    sandbox.write("/tmp/file", "text\n");
    failNext("fclose", EIO);
    CapturedOutput output;
    std::string value;
    EXPECT_EQ(LibUtils::readFirstLine(value, "/tmp/file"), 0);
    EXPECT_EQ(value, "text");
    EXPECT_EQ(output.err(), errorText("fclose() FAILED: ", EIO) + "\n");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineStaysFailedWhenTheCloseFailsAndTellsBoth)
{
    sandbox.write("/tmp/file", "text\n");
    failNext("fgets", EIO);
    failNext("fclose", ENOSPC);
    CapturedOutput output;
    std::string value;
    EXPECT_EQ(LibUtils::readFirstLine(value, "/tmp/file"), -1);
    EXPECT_EQ(output.err(), errorText("fgets() failed or file is empty: ", EIO) + "\n" +
                                errorText("fclose() FAILED: ", ENOSPC) + "\n");
}

TEST_F(LibUtilsFilesTest, ReadFirstLineClosesTheFileAfterAFailedRead)
{
    sandbox.write("/tmp/empty", "");
    CapturedOutput output;
    std::string value;
    LibUtils::readFirstLine(value, "/tmp/empty");
    EXPECT_EQ(callsTo("fclose").size(), 1U);
}

TEST_F(LibUtilsFilesTest, ReadFirstLineNeverLogs)
{
    CapturedOutput output;
    std::string value;
    LibUtils::readFirstLine(value, "/tmp/missing");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(LibUtilsFilesTest, AFileExists)
{
    sandbox.write("/tmp/file", "");
    EXPECT_EQ(LibUtils::fileExists("/tmp/file"), 1);
}

TEST_F(LibUtilsFilesTest, ADirectoryExists)
{
    EXPECT_EQ(LibUtils::fileExists("/tmp"), 1);
}

TEST_F(LibUtilsFilesTest, ADeviceExists)
{
    std::filesystem::create_symlink("/dev/null", sandbox.path("/dev/device"));
    EXPECT_EQ(LibUtils::fileExists("/dev/device"), 1);
}

TEST_F(LibUtilsFilesTest, AMissingFileDoesNotExistAndNothingIsSaid)
{
    CapturedOutput output;
    EXPECT_EQ(LibUtils::fileExists("/tmp/missing"), 0);
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(LibUtilsFilesTest, AFileThatCannotBeAskedForDoesNotExist)
{
    sandbox.write("/tmp/file", "");
    failNext("stat", EACCES);
    EXPECT_EQ(LibUtils::fileExists("/tmp/file"), 0);
}

TEST_F(LibUtilsFilesTest, GetFileSizeStoresTheSizeInBytes)
{
    sandbox.write("/tmp/file", std::string(70000, 'x'));
    std::int64_t size = -1;
    EXPECT_EQ(LibUtils::getFileSize("/tmp/file", size), 0);
    EXPECT_EQ(size, 70000);
}

TEST_F(LibUtilsFilesTest, GetFileSizeOfAMissingFileFailsAndLeavesTheSize)
{
    std::int64_t size = 77;
    EXPECT_EQ(LibUtils::getFileSize("/tmp/missing", size), -1);
    EXPECT_EQ(size, 77);
}

TEST_F(LibUtilsFilesTest, TheFilterDropsTheDirectoryItselfAndItsParent)
{
    EXPECT_EQ(filtered("."), 0);
    EXPECT_EQ(filtered(".."), 0);
}

TEST_F(LibUtilsFilesTest, TheFilterDropsTheBaseSystem)
{
    EXPECT_EQ(filtered("squashfs"), 0);
}

TEST_F(LibUtilsFilesTest, TheFilterKeepsNamesThatOnlyBeginLikeADroppedOne)
{
    EXPECT_EQ(filtered("squashfs.bak"), 1);
    EXPECT_EQ(filtered("squash"), 1);
    EXPECT_EQ(filtered("..."), 1);
    EXPECT_EQ(filtered(".hidden"), 1);
}

TEST_F(LibUtilsFilesTest, TheFilterMindsTheCase)
{
    EXPECT_EQ(filtered("Squashfs"), 1);
}

TEST_F(LibUtilsFilesTest, TheFilterLooksAtTheNameOnly)
{
    dirent directory = {};
    directory.d_type = DT_DIR;
    std::strcpy(directory.d_name, "drav");
    EXPECT_EQ(LibUtils::directoryEntryFilter(&directory), 1);
}
