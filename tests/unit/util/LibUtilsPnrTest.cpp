// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>

using LibUtilsPnrTest = SystemTest;
using PnrListTest = SystemTest;

TEST_F(LibUtilsPnrTest, TheBaseSystemVersionIsTheFirstLineOfSquashfs)
{
    sandbox.write("/etc/pnr/squashfs", "1.2.3\nmore\n");
    std::string value;
    EXPECT_EQ(LibUtils::readBaseSystemVersion(value), 1);
    EXPECT_EQ(value, "1.2.3");
}

TEST_F(LibUtilsPnrTest, AMissingBaseSystemVersionIsAbsentAndNothingIsSaid)
{
    CapturedOutput output;
    std::string value = "old";
    EXPECT_EQ(LibUtils::readBaseSystemVersion(value), 0);
    EXPECT_EQ(value, "old");
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(LibUtilsPnrTest, AnEmptyBaseSystemVersionIsUnreadable)
{
    sandbox.write("/etc/pnr/squashfs", "");
    CapturedOutput output;
    std::string value;
    EXPECT_EQ(LibUtils::readBaseSystemVersion(value), -1);
    EXPECT_EQ(output.err(), errorText("fgets() failed or file is empty: ", 0) + "\n");
}

TEST_F(LibUtilsPnrTest, ABaseSystemVersionThatCannotBeOpenedIsUnreadable)
{
    sandbox.write("/etc/pnr/squashfs", "1.2.3\n");
    failNext("fopen", EACCES);
    CapturedOutput output;
    std::string value;
    EXPECT_EQ(LibUtils::readBaseSystemVersion(value), -1);
    EXPECT_EQ(output.err(), errorText("fopen() failed: ", EACCES) + "\n");
}

TEST_F(LibUtilsPnrTest, APnrFileGivesTheFirstLine)
{
    sandbox.write("/etc/pnr/drav", "DRAV 4\n");
    std::string name = "drav";
    std::string value;
    EXPECT_EQ(LibUtils::readPnrFile(name, value), 1);
    EXPECT_EQ(value, "DRAV 4");
}

TEST_F(LibUtilsPnrTest, APnrFileGetsItsDirectoryPutInFrontOfItsName)
{
    std::string name = "drav";
    std::string value;
    LibUtils::readPnrFile(name, value);
    EXPECT_EQ(name, "/etc/pnr/drav");
}

TEST_F(LibUtilsPnrTest, AMissingPnrFileIsAbsent)
{
    std::string name = "drav";
    std::string value = "old";
    EXPECT_EQ(LibUtils::readPnrFile(name, value), 0);
    EXPECT_EQ(value, "old");
}

TEST_F(LibUtilsPnrTest, APnrFileThatIsADirectoryIsUnreadable)
{
    sandbox.makeDirectory("/etc/pnr/directory");
    CapturedOutput output;
    std::string name = "directory";
    std::string value;
    EXPECT_EQ(LibUtils::readPnrFile(name, value), -1);
    EXPECT_EQ(output.err(), errorText("fgets() failed or file is empty: ", EISDIR) + "\n");
}

TEST_F(LibUtilsPnrTest, AnEmptyPnrFileIsUnreadable)
{
    sandbox.write("/etc/pnr/drav", "");
    CapturedOutput output;
    std::string name = "drav";
    std::string value;
    EXPECT_EQ(LibUtils::readPnrFile(name, value), -1);
}

TEST_F(LibUtilsPnrTest, APnrFileWithAnEmptyFirstLineHasAnEmptyVersion)
{
    sandbox.write("/etc/pnr/drav", "\n");
    std::string name = "drav";
    std::string value = "old";
    EXPECT_EQ(LibUtils::readPnrFile(name, value), 1);
    EXPECT_EQ(value, "");
}

TEST_F(PnrListTest, NamesAreListedInAlphabeticalOrder)
{
    for (const char* name : {"vemk", "drav", "linux"}) {
        sandbox.write(std::string("/etc/pnr/") + name, "1\n");
    }
    std::vector<std::string> names;
    EXPECT_EQ(LibUtils::listPnrFiles(names), 3);
    EXPECT_EQ(names, (Texts{"drav", "linux", "vemk"}));
}

TEST_F(PnrListTest, NamesAreAppendedToTheCallersList)
{
    sandbox.write("/etc/pnr/drav", "1\n");
    std::vector<std::string> names = {"first"};
    EXPECT_EQ(LibUtils::listPnrFiles(names), 1);
    EXPECT_EQ(names, (Texts{"first", "drav"}));
}

TEST_F(PnrListTest, TheBaseSystemIsNotListed)
{
    sandbox.write("/etc/pnr/squashfs", "1\n");
    sandbox.write("/etc/pnr/squashfs.bak", "1\n");
    std::vector<std::string> names;
    EXPECT_EQ(LibUtils::listPnrFiles(names), 1);
    EXPECT_EQ(names, Texts{"squashfs.bak"});
}

TEST_F(PnrListTest, ASubdirectoryIsListedThoughItCannotBeRead)
{
    sandbox.makeDirectory("/etc/pnr/directory");
    std::vector<std::string> names;
    EXPECT_EQ(LibUtils::listPnrFiles(names), 1);
    EXPECT_EQ(names, Texts{"directory"});
}

TEST_F(PnrListTest, AnEmptyDirectoryListsNothing)
{
    sandbox.makeDirectory("/etc/pnr");
    std::vector<std::string> names = {"first"};
    EXPECT_EQ(LibUtils::listPnrFiles(names), 0);
    EXPECT_EQ(names, Texts{"first"});
}

TEST_F(PnrListTest, AMissingDirectoryCannotBeListedAndNothingIsSaid)
{
    CapturedOutput output;
    std::vector<std::string> names = {"first"};
    EXPECT_EQ(LibUtils::listPnrFiles(names), -1);
    EXPECT_EQ(names, Texts{"first"});
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(PnrListTest, OnlyThePnrDirectoryIsScanned)
{
    std::vector<std::string> names;
    LibUtils::listPnrFiles(names);
    EXPECT_EQ(callsTo("scandir"), Texts{"/etc/pnr/"});
}
