// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include <array>

#include <gtest/gtest.h>

using Memory = std::array<std::uint8_t, 9>;

TEST(LibUtilsBytesTest, SwapBytes64ReversesAllEightBytes)
{
    std::uint64_t word = 0x0102030405060708;
    LibUtils::swapBytes64(&word, 1);
    EXPECT_EQ(word, 0x0807060504030201U);
}

TEST(LibUtilsBytesTest, SwapBytes32ReversesFourBytes)
{
    std::uint32_t word = 0x81C39AFF;
    LibUtils::swapBytes32(&word, 1);
    EXPECT_EQ(word, 0xFF9AC381U);
}

TEST(LibUtilsBytesTest, SwapBytes16ReversesTwoBytes)
{
    std::uint16_t word = 0x8011;
    LibUtils::swapBytes16(&word, 1);
    EXPECT_EQ(word, 0x1180U);
}

TEST(LibUtilsBytesTest, SwapBytes64TakesEachElementForItself)
{
    std::array<std::uint64_t, 2> words = {0x0102030405060708, 0xFF00000000000000};
    LibUtils::swapBytes64(words.data(), words.size());
    EXPECT_EQ(words, (std::array<std::uint64_t, 2>{0x0807060504030201, 0x00000000000000FF}));
}

TEST(LibUtilsBytesTest, SwapBytes32TakesEachElementForItself)
{
    std::array<std::uint32_t, 2> words = {0x01020304, 0xFF000000};
    LibUtils::swapBytes32(words.data(), words.size());
    EXPECT_EQ(words, (std::array<std::uint32_t, 2>{0x04030201, 0x000000FF}));
}

TEST(LibUtilsBytesTest, SwapBytes16TakesEachElementForItself)
{
    std::array<std::uint16_t, 2> words = {0x0102, 0xFF00};
    LibUtils::swapBytes16(words.data(), words.size());
    EXPECT_EQ(words, (std::array<std::uint16_t, 2>{0x0201, 0x00FF}));
}

TEST(LibUtilsBytesTest, SwapBytes64StopsAfterTheCount)
{
    Memory memory = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    LibUtils::swapBytes64(memory.data(), 1);
    EXPECT_EQ(memory, (Memory{8, 7, 6, 5, 4, 3, 2, 1, 9}));
}

TEST(LibUtilsBytesTest, SwapBytes32StopsAfterTheCount)
{
    Memory memory = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    LibUtils::swapBytes32(memory.data(), 1);
    EXPECT_EQ(memory, (Memory{4, 3, 2, 1, 5, 6, 7, 8, 9}));
}

TEST(LibUtilsBytesTest, SwapBytes16StopsAfterTheCount)
{
    Memory memory = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    LibUtils::swapBytes16(memory.data(), 3);
    EXPECT_EQ(memory, (Memory{2, 1, 4, 3, 6, 5, 7, 8, 9}));
}

TEST(LibUtilsBytesTest, ACountOfZeroChangesNothing)
{
    Memory memory = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    LibUtils::swapBytes64(memory.data(), 0);
    LibUtils::swapBytes32(memory.data(), 0);
    LibUtils::swapBytes16(memory.data(), 0);
    EXPECT_EQ(memory, (Memory{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(LibUtilsBytesTest, ElementsMayStandAtAnOddAddress)
{
    Memory memory = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    LibUtils::swapBytes64(memory.data() + 1, 1);
    EXPECT_EQ(memory, (Memory{1, 9, 8, 7, 6, 5, 4, 3, 2}));
}

TEST(LibUtilsBytesTest, SwappingTwiceGivesTheFirstBytesBack)
{
    Memory memory = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    LibUtils::swapBytes32(memory.data(), 2);
    LibUtils::swapBytes32(memory.data(), 2);
    EXPECT_EQ(memory, (Memory{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}
