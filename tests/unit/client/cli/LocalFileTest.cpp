// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/LocalFile.h"

#include "unit/client/FailureOf.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>

namespace
{

class ReplaceLocalFileTest : public testing::Test
{
protected:
    ReplaceLocalFileTest()
    {
        std::string pattern = testing::TempDir() + "local-file-XXXXXX";
        folder = ::mkdtemp(pattern.data());
    }
    ~ReplaceLocalFileTest() override { std::filesystem::remove_all(folder); }

    [[nodiscard]] std::set<std::string> names() const
    {
        std::set<std::string> all;
        for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder)) {
            all.insert(entry.path().filename());
        }
        return all;
    }

    std::filesystem::path folder;
};

TEST_F(ReplaceLocalFileTest, MakesAFileThatEverybodyMayRead)
{
    const mode_t former = ::umask(077);
    replaceLocalFile(folder / "cards.prom", "tarvel_up 1\n");
    ::umask(former);
    struct stat status = {};
    ASSERT_EQ(::stat((folder / "cards.prom").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0644U);
    EXPECT_EQ(readLocalFile(folder / "cards.prom"), "tarvel_up 1\n");
}

TEST_F(ReplaceLocalFileTest, LeavesTheFormerTextToWhoIsReadingIt)
{
    replaceLocalFile(folder / "cards.prom", "former\n");
    std::ifstream reader(folder / "cards.prom");
    replaceLocalFile(folder / "cards.prom", "new, and longer\n");
    std::string line;
    std::getline(reader, line);
    EXPECT_EQ(line, "former");
    EXPECT_EQ(readLocalFile(folder / "cards.prom"), "new, and longer\n");
}

TEST_F(ReplaceLocalFileTest, LeavesNothingElseBehind)
{
    replaceLocalFile(folder / "cards.prom", std::string(1 << 20, 'x'));
    EXPECT_EQ(names(), std::set<std::string>{"cards.prom"});
}

TEST_F(ReplaceLocalFileTest, FindsAFileOfTheFolderThatItIsIn)
{
    const std::filesystem::path former = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    replaceLocalFile("cards.prom", "text");
    std::filesystem::current_path(former);
    EXPECT_EQ(names(), std::set<std::string>{"cards.prom"});
}

TEST_F(ReplaceLocalFileTest, WritesWhereALinkLeads)
{
    std::filesystem::create_directory(folder / "elsewhere");
    replaceLocalFile(folder / "elsewhere/cards.prom", "former");
    std::filesystem::create_symlink("elsewhere/cards.prom", folder / "link");
    replaceLocalFile(folder / "link", "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(readLocalFile(folder / "elsewhere/cards.prom"), "new");
}

TEST_F(ReplaceLocalFileTest, NamesTheFileThatCannotBeMade)
{
    const Failure failure = failureOf([&] { replaceLocalFile(folder / "none/cards.prom", "text"); });
    EXPECT_EQ(failure.code, ExitCode::badFile);
    EXPECT_NE(failure.hint.find("none/cards.prom: No such file or directory"), std::string::npos) << failure.hint;
}

// The last one only when the text is written, and the file gets its name.
TEST_F(ReplaceLocalFileTest, LeavesNothingBehindWhenItFails)
{
    std::filesystem::create_directory(folder / "none");
    EXPECT_THROW(replaceLocalFile(folder / "none/", "text"), Failure);
    EXPECT_THROW(replaceLocalFile(folder / std::string(300, 'x'), "text"), Failure);
    EXPECT_EQ(names(), std::set<std::string>{"none"});
    EXPECT_TRUE(std::filesystem::is_empty(folder / "none"));
}

TEST_F(ReplaceLocalFileTest, PutsNoFileInThePlaceOfADevice)
{
    const Failure failure = failureOf([] { replaceLocalFile("/dev/null", "text"); });
    EXPECT_NE(failure.hint.find("no regular file"), std::string::npos) << failure.hint;
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

} // namespace
