// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/DatagramBuffer.h"

#include "support/SampleMessages.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

namespace
{

constexpr std::uint8_t allSections = section64Bit | section32Bit | section16Bit | section8Bit;

std::span<std::byte> writable(Bytes& bytes)
{
    return std::as_writable_bytes(std::span(bytes));
}

template<typename Integer>
Integer hostValueAt(const Bytes& bytes, std::size_t offset)
{
    Integer value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

Bytes decoded(std::uint8_t format, Bytes bytes)
{
    decodeDatagramSections(format, writable(bytes));
    return bytes;
}

Bytes encoded(std::uint8_t format, Bytes bytes)
{
    encodeDatagramSections(format, writable(bytes));
    return bytes;
}

template<typename Integer>
Bytes inHostOrder(Integer value)
{
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// One element of each width on the wire, the 8-bit section last.
const Bytes oneOfEach = section(Bytes{8, 7, 6, 5, 4, 3, 2, 1}) + section(Bytes{4, 3, 2, 1}) + section(Bytes{2, 1}) +
                        section(Bytes{'x', 'y'});

// The same as a host holds it.
const Bytes oneOfEachInHostOrder = inHostOrder<std::uint32_t>(8) + inHostOrder<std::uint64_t>(0x0102030405060708U) +
                                   inHostOrder<std::uint32_t>(4) + inHostOrder<std::uint32_t>(0x01020304U) +
                                   inHostOrder<std::uint32_t>(2) + inHostOrder<std::uint16_t>(0x0102U) +
                                   inHostOrder<std::uint32_t>(2) + Bytes{'x', 'y'};

} // namespace

TEST(DatagramSectionsTest, AreDecodedInTheOrder64Then32Then16Then8Bit)
{
    EXPECT_EQ(hex(decoded(allSections, oneOfEach)), hex(oneOfEachInHostOrder));
}

TEST(DatagramSectionsTest, AreEncodedInTheOrder64Then32Then16Then8Bit)
{
    EXPECT_EQ(hex(encoded(allSections, oneOfEachInHostOrder)), hex(oneOfEach));
}

TEST(DatagramSectionsTest, AreDecodedWhereNoElementIsAligned)
{
    Bytes shifted = Bytes{0xEE} + oneOfEach;
    decodeDatagramSections(allSections, writable(shifted).subspan(1));
    EXPECT_EQ(hex(shifted), hex(Bytes{0xEE} + oneOfEachInHostOrder));
}

TEST(DatagramSectionsTest, AreEncodedWhereNoElementIsAligned)
{
    Bytes shifted = Bytes{0xEE} + oneOfEachInHostOrder;
    encodeDatagramSections(allSections, writable(shifted).subspan(1));
    EXPECT_EQ(hex(shifted), hex(Bytes{0xEE} + oneOfEach));
}

TEST(DatagramSectionsTest, AreFoundBehindASectionOfOddLength)
{
    const Bytes bytes = section(Bytes{1, 2, 3}) + section(Bytes{'z'});
    EXPECT_EQ(hostValueAt<std::uint32_t>(decoded(section16Bit | section8Bit, bytes), 7), 1U);
}

TEST(DatagramSectionsTest, KeepTheBytesBehindTheLastWholeElement)
{
    const Bytes result = decoded(section32Bit, section(Bytes{4, 3, 2, 1, 0xAA, 0xBB}));
    EXPECT_EQ(hostValueAt<std::uint32_t>(result, 4), 0x01020304U);
    EXPECT_EQ(result[8], 0xAA);
    EXPECT_EQ(result[9], 0xBB);
}

TEST(DatagramSectionsTest, ThatAreNotAnnouncedAreLeftAlone)
{
    EXPECT_EQ(decoded(0, oneOfEach), oneOfEach);
    EXPECT_EQ(encoded(0, oneOfEach), oneOfEach);
}

TEST(DatagramSectionsTest, HaveTheirCountDecodedIfItIsAllThatCame)
{
    EXPECT_EQ(hostValueAt<std::uint32_t>(decoded(section8Bit, little32(7)), 0), 7U);
}

TEST(DatagramSectionsTest, EndTheWalkWhereACountIsCutOff)
{
    const Bytes cut = {1, 2, 3};
    EXPECT_EQ(decoded(allSections, cut), cut);
    EXPECT_EQ(encoded(allSections, cut), cut);
}

TEST(DatagramSectionsTest, EndTheWalkWhereACountReachesBeyondTheBytes)
{
    const Bytes tooLong = little32(9) + Bytes{8, 7, 6, 5, 4, 3, 2, 1};
    const Bytes result = decoded(section64Bit | section32Bit, tooLong);
    EXPECT_EQ(Bytes(result.begin() + 4, result.end()), (Bytes{8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(DatagramSectionsTest, EndTheWalkAtTheGreatestCount)
{
    const Bytes greatest = little32(0xFFFFFFFF) + Bytes{1, 2, 3, 4};
    const Bytes result = decoded(allSections, greatest);
    EXPECT_EQ(Bytes(result.begin() + 4, result.end()), (Bytes{1, 2, 3, 4}));
}

TEST(DatagramSectionsTest, AreNothingToWalkWithoutBytes)
{
    EXPECT_EQ(decoded(allSections, {}), Bytes{});
    EXPECT_EQ(encoded(allSections, {}), Bytes{});
}
