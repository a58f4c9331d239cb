// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/File.h"

#include "support/SystemTest.h"

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

// The calls in this header are compiled into the test and not redirected, so names are those of the sandbox.
using FileTest = SystemTest;

TEST_F(FileTest, AFileThatExistsIsOpen)
{
    sandbox.write("/tmp/file", "text");
    const File file(sandbox.path("/tmp/file").c_str(), "re");
    EXPECT_TRUE(file);
    EXPECT_EQ(std::fgetc(file.get()), 't');
}

TEST_F(FileTest, AFileThatCannotBeOpenedIsFalseAndKeepsTheReasonInErrno)
{
    const File file(sandbox.path("/tmp/missing").c_str(), "re");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(file);
    EXPECT_EQ(file.get(), nullptr);
}

TEST_F(FileTest, CloseTellsThatAllWasWritten)
{
    File file(sandbox.path("/tmp/file").c_str(), "we");
    std::fputs("text", file.get());
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(sandbox.read("/tmp/file"), "text");
}

TEST_F(FileTest, CloseTellsThatAWriteCameTooLate)
{
    File file("/dev/full", "we"); // takes nothing
    std::fputs("text", file.get());
    EXPECT_EQ(file.close(), EOF);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(FileTest, TheStreamIsGoneAfterClose)
{
    sandbox.write("/tmp/file", "text");
    File file(sandbox.path("/tmp/file").c_str(), "re");
    EXPECT_EQ(file.close(), 0);
    EXPECT_FALSE(file);
}

TEST_F(FileTest, TheDestructorClosesWhatIsStillOpen)
{
    sandbox.write("/tmp/file", "text");
    int descriptor = -1;
    {
        const File file(sandbox.path("/tmp/file").c_str(), "re");
        descriptor = fileno(file.get());
    }
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

TEST_F(FileTest, TheModeLetterKeepsTheDescriptorFromShellCommands)
{
    sandbox.write("/tmp/file", "text");
    const File file(sandbox.path("/tmp/file").c_str(), "re");
    EXPECT_EQ(fcntl(fileno(file.get()), F_GETFD), FD_CLOEXEC);
}

TEST_F(FileTest, AGivenBufferIsReadInto)
{
    sandbox.write("/tmp/file", "text");
    std::array<char, 64> buffer = {};
    File file(sandbox.path("/tmp/file").c_str(), "r");
    file.useBuffer(buffer);
    EXPECT_EQ(std::fgetc(file.get()), 't');
    const std::string_view content(buffer.data(), buffer.size());
    EXPECT_NE(content.find("text"), content.npos) << "some C libraries leave room in front of what they read";
}

TEST_F(FileTest, WithAnEmptyBufferNoMoreIsReadThanWasAskedFor)
{
    sandbox.write("/tmp/file", "text");
    File file(sandbox.path("/tmp/file").c_str(), "r");
    file.useBuffer({});
    EXPECT_EQ(std::fgetc(file.get()), 't');
    EXPECT_EQ(lseek(fileno(file.get()), 0, SEEK_CUR), 1);
}
