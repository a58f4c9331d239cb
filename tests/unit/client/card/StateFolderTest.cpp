// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/StateFolder.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <unistd.h>

namespace
{

class StateFolderTest : public testing::Test
{
protected:
    StateFolderTest()
    {
        std::filesystem::remove_all(folder);
        ::setenv("XDG_STATE_HOME", folder.c_str(), 1);
    }
    ~StateFolderTest() override
    {
        ::unsetenv("XDG_STATE_HOME");
        std::filesystem::remove_all(folder);
    }

    static std::string contentOf(const std::string& name)
    {
        std::ifstream file(stateFolder() / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Of this process alone: tests run side by side.
    const std::filesystem::path folder = testing::TempDir() + "tarvelctl-state-" + std::to_string(::getpid());
};

TEST_F(StateFolderTest, MakesOneWordOfAnyName)
{
    EXPECT_EQ(plainWord("card-01"), "card-01");
    EXPECT_EQ(plainWord("../a b"), "%2e%2e%2fa%20b");
}

TEST_F(StateFolderTest, ReplacesAFileWholly)
{
    ASSERT_TRUE(replaceStateFile("one", "a longer text\n"));
    ASSERT_TRUE(replaceStateFile("one", "short\n"));
    EXPECT_EQ(contentOf("one"), "short\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(stateFolder()), {}), 1);
}

TEST_F(StateFolderTest, SaysThatAFileCannotBeWritten)
{
    std::ofstream(folder) << "a file where the folder should be";
    EXPECT_FALSE(replaceStateFile("one", "text"));
}

} // namespace
