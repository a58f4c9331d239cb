// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/decode/HexInput.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace
{

Bytes bytes(std::initializer_list<int> values)
{
    Bytes result;
    for (const int value : values) {
        result.push_back(static_cast<std::byte>(value));
    }
    return result;
}

std::string complaintAbout(std::string_view text)
{
    try {
        (void)parseHex(text);
    } catch (const BadHex& bad) {
        return bad.what();
    }
    return "";
}

TEST(HexInputTest, ReadsDigitsInOneRow)
{
    EXPECT_EQ(parseHex("81c39aFF"), bytes({0x81, 0xC3, 0x9A, 0xFF}));
}

TEST(HexInputTest, IgnoresBlanksAndPunctuation)
{
    EXPECT_EQ(parseHex(" 81:c3, 9a-ff;\n\n{01}\r\n"), bytes({0x81, 0xC3, 0x9A, 0xFF, 0x01}));
}

TEST(HexInputTest, TakesPrefixedBytesEvenOfOneDigit)
{
    EXPECT_EQ(parseHex("0x81, 0XC3, 0x5 \\x9a"), bytes({0x81, 0xC3, 0x05, 0x9A}));
}

TEST(HexInputTest, LeavesOutOffsetsAndCharactersOfXxd)
{
    EXPECT_EQ(parseHex("00000000: 81c3 9aff 0101 0504  abc def.\n00000008: 6162                 ab\n"),
              bytes({0x81, 0xC3, 0x9A, 0xFF, 0x01, 0x01, 0x05, 0x04, 0x61, 0x62}));
}

TEST(HexInputTest, LeavesOutOffsetsAndCharactersOfHexdump)
{
    EXPECT_EQ(parseHex("00000000  81 c3  9a ff  |ab d|\n00000004  01        |.|\n00000005\n"),
              bytes({0x81, 0xC3, 0x9A, 0xFF, 0x01}));
}

TEST(HexInputTest, TakesWordsOfFourBytesForBytes)
{
    EXPECT_EQ(parseHex("81c39aff 01000504").size(), 8U);
}

TEST(HexInputTest, TakesALoneWordForBytesWhereNoOffsetsAre)
{
    EXPECT_EQ(parseHex("81c39aff\n01000504\n").size(), 8U);
}

TEST(HexInputTest, NamesTheLineAndTheWordThatIsNoHexadecimal)
{
    EXPECT_EQ(complaintAbout("81\nc3 xy"), "line 2: \"xy\" is not hexadecimal");
}

TEST(HexInputTest, RefusesAnOddNumberOfDigits)
{
    EXPECT_EQ(complaintAbout("81c"), "line 1: \"81c\" has an odd number of digits");
}

TEST(HexInputTest, RefusesAPrefixWithNothingBehindIt)
{
    EXPECT_EQ(complaintAbout("0x"), "line 1: \"0x\" is not hexadecimal");
}

TEST(HexInputTest, FindsNoBytesInAnEmptyText)
{
    EXPECT_TRUE(parseHex(" \n\n").empty());
}

} // namespace
