// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/HeldFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

class HeldFileTest : public testing::Test
{
protected:
    HeldFileTest()
    {
        std::string pattern = testing::TempDir() + "held-XXXXXX";
        directory = ::mkdtemp(pattern.data());
        path = directory + "/file";
        write(path, "first");
    }
    ~HeldFileTest() override { std::filesystem::remove_all(directory); }

    static void write(const std::string& name, const std::string& content)
    {
        std::ofstream(name, std::ios::binary) << content;
    }

    static std::string textOf(const HeldFile& file)
    {
        std::array<std::byte, 100> bytes = {};
        const ssize_t size = file.read(bytes, 0);
        return {reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }

    std::string directory;
    std::string path;
};

} // namespace

TEST_F(HeldFileTest, IsReadFromAnyPlace)
{
    const HeldFile file(path);
    EXPECT_TRUE(file.isRegular());
    EXPECT_EQ(file.size(), 5U);
    std::array<std::byte, 2> bytes = {};
    EXPECT_EQ(file.read(bytes, 3), 2);
    EXPECT_EQ(bytes, (std::array{std::byte{'s'}, std::byte{'t'}}));
    EXPECT_EQ(file.read(bytes, 5), 0);
}

TEST_F(HeldFileTest, StaysTheSameWhenAnotherGetsItsName)
{
    const HeldFile file(path);
    write(directory + "/another", "second");
    ASSERT_EQ(std::rename((directory + "/another").c_str(), path.c_str()), 0);
    EXPECT_EQ(textOf(file), "first");
    EXPECT_TRUE(file.isUnchanged());
}

TEST_F(HeldFileTest, NoticesThatItGrew)
{
    const HeldFile file(path);
    write(path, "first and more");
    EXPECT_FALSE(file.isUnchanged());
}

TEST_F(HeldFileTest, NoticesAnotherTextOfTheSameLength)
{
    const HeldFile file(path);
    write(path, "other");
    std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::milliseconds(1));
    EXPECT_FALSE(file.isUnchanged());
}

TEST_F(HeldFileTest, IsFalseIfThereIsNone)
{
    EXPECT_FALSE(HeldFile(directory + "/none"));
    EXPECT_FALSE(HeldFile());
}

TEST_F(HeldFileTest, KnowsADirectory)
{
    EXPECT_FALSE(HeldFile(directory).isRegular());
}
