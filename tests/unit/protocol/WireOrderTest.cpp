// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/WireOrder.h"

#include "support/SampleMessages.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

namespace
{

constexpr std::array<std::byte, 4> wireBytes = {std::byte{0x81}, std::byte{0xC3}, std::byte{0x9A}, std::byte{0xFF}};

// Behind one byte, so that the elements are not aligned.
template<typename Integer>
std::array<Integer, 2> convertedUnaligned(const Bytes& wire, void (*convert)(void*, std::size_t))
{
    Bytes storage = Bytes{0xEE} + wire;
    convert(storage.data() + 1, 2);
    std::array<Integer, 2> elements;
    std::memcpy(elements.data(), storage.data() + 1, sizeof elements);
    return elements;
}

} // namespace

TEST(WireOrderTest, ReadsTheLeastSignificantByteFirst)
{
    EXPECT_EQ(readLittle32(wireBytes), 0xFF9AC381U);
}

TEST(WireOrderTest, WritesTheLeastSignificantByteFirst)
{
    std::array<std::byte, 4> bytes = {};
    writeLittle32(bytes, 0xFF9AC381U);
    EXPECT_EQ(bytes, wireBytes);
}

TEST(WireOrderTest, ConvertsEachUnaligned64BitElementAsAWhole)
{
    const std::array<std::uint64_t, 2> expected = {0x0807060504030201U, 0xFFEEDDCCBBAA9988U};
    EXPECT_EQ(convertedUnaligned<std::uint64_t>(
                  {1, 2, 3, 4, 5, 6, 7, 8, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}, convertWords64),
              expected);
}

TEST(WireOrderTest, ConvertsEachUnaligned32BitElement)
{
    const std::array<std::uint32_t, 2> expected = {0x04030201U, 0xDDCCBBAAU};
    EXPECT_EQ(convertedUnaligned<std::uint32_t>({1, 2, 3, 4, 0xAA, 0xBB, 0xCC, 0xDD}, convertWords32), expected);
}

TEST(WireOrderTest, ConvertsEachUnaligned16BitElement)
{
    const std::array<std::uint16_t, 2> expected = {0x0201U, 0xBBAAU};
    EXPECT_EQ(convertedUnaligned<std::uint16_t>({1, 2, 0xAA, 0xBB}, convertWords16), expected);
}

TEST(WireOrderTest, ConvertsNothingForACountOfZero)
{
    std::array<std::uint8_t, 8> untouched = {1, 2, 3, 4, 5, 6, 7, 8};
    const std::array<std::uint8_t, 8> before = untouched;
    convertWords64(untouched.data(), 0);
    convertWords32(untouched.data(), 0);
    convertWords16(untouched.data(), 0);
    EXPECT_EQ(untouched, before);
}
