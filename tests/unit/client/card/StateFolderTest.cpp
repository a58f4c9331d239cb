// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/StateFolder.h"

#include "unit/client/card/OwnStateFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace
{

class StateFolderTest : public OwnStateFolder
{
protected:
    static std::string contentOf(const std::string& name)
    {
        std::ifstream file(stateFolder() / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }
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
