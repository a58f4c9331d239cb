// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/TextSection.h"

#include <array>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace
{

using Buffer = std::array<std::byte, 15>;

std::string memoryOf(const Buffer& buffer)
{
    return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

Buffer bufferOf(const char (&content)[16])
{
    Buffer buffer;
    std::memcpy(buffer.data(), content, buffer.size());
    return buffer;
}

std::string hostWord(std::uint32_t value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

} // namespace

TEST(TextSectionTest, TakesFiveBytesMoreThanItsText)
{
    EXPECT_EQ(textSectionSize(10), 15U);
}

TEST(TextSectionTest, CountsTheNulOfItsText)
{
    EXPECT_EQ(textCount(10), 11U);
}

TEST(TextSectionTest, IsWrittenAsItTravels)
{
    Buffer buffer;
    ASSERT_TRUE(writeTextSection(buffer, "0123456789", CountOrder::wire));
    EXPECT_EQ(memoryOf(buffer), std::string("\x0B\0\0\0"
                                            "0123456789\0",
                                            15));
}

TEST(TextSectionTest, IsWrittenWithTheCountOfTheHost)
{
    Buffer buffer;
    ASSERT_TRUE(writeTextSection(buffer, "0123456789", CountOrder::host));
    EXPECT_EQ(memoryOf(buffer), hostWord(11) + std::string("0123456789\0", 11));
}

TEST(TextSectionTest, IsNotWrittenWhereItDoesNotFit)
{
    Buffer buffer = bufferOf("untouched......");
    EXPECT_FALSE(writeTextSection(buffer, "0123456789a", CountOrder::wire));
    EXPECT_EQ(memoryOf(buffer), "untouched......");
}

TEST(TextSectionTest, IsReadUpToItsCount)
{
    const Buffer buffer = bufferOf("\x04\0\0\0text, more.");
    EXPECT_EQ(readTextSection(buffer, CountOrder::wire), "text");
}

TEST(TextSectionTest, IsReadWithTheCountOfTheHost)
{
    Buffer buffer = bufferOf("....text, more.");
    std::memcpy(buffer.data(), hostWord(4).data(), 4);
    EXPECT_EQ(readTextSection(buffer, CountOrder::host), "text");
}

TEST(TextSectionTest, IsReadToTheEndOfTheBytesIfTheCountReachesFarther)
{
    const Buffer buffer = bufferOf("\xFF\xFF\xFF\xFFtext, more.");
    EXPECT_EQ(readTextSection(buffer, CountOrder::wire), "text, more.");
}

TEST(TextSectionTest, IsEmptyWithoutAWholeCount)
{
    const Buffer buffer = bufferOf("\x04\0\0\0text, more.");
    EXPECT_EQ(readTextSection(std::span(buffer).first(3), CountOrder::wire), "");
}
