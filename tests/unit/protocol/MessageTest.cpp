// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/Message.h"

#include "support/SampleMessages.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

namespace
{

Bytes memoryOf(const void* data, std::size_t size)
{
    const auto* start = static_cast<const std::uint8_t*>(data);
    return {start, start + size};
}

} // namespace

TEST(MessageTest, CountsTheTerminatingNulOfItsText)
{
    std::array<char, 64> buffer;
    Message message;
    EXPECT_EQ(message.setText(buffer, "0123456789"), 15U);
    EXPECT_EQ(message.section8.count, 11U);
}

TEST(MessageTest, PointsToACopyOfItsText)
{
    std::array<char, 64> buffer;
    Message message;
    static_cast<void>(message.setText(buffer, "text"));
    EXPECT_EQ(message.section8.data, buffer.data());
    EXPECT_STREQ(buffer.data(), "text");
}

TEST(MessageTest, CutsATextThatDoesNotFitAndCountsWhatIsLeft)
{
    std::array<char, 5> buffer;
    Message message;
    EXPECT_EQ(message.setText(buffer, "0123456789"), 9U);
    EXPECT_STREQ(buffer.data(), "0123");
    EXPECT_EQ(message.section8.count, 5U);
}

TEST(MessageTest, EncodesA64BitSection)
{
    std::array<std::uint64_t, 2> elements = {0x0102030405060708U, 0x1112131415161718U};
    Message message;
    message.header.messageFormat = section64Bit;
    message.section64 = {sizeof elements, elements.data()};
    swapSections(message);
    EXPECT_EQ(hex(memoryOf(elements.data(), sizeof elements)), "08070605 04030201 18171615 14131211");
    EXPECT_EQ(hex(memoryOf(&message.section64.count, 4)), "10000000");
    EXPECT_EQ(message.section64.data, elements.data());
}

TEST(MessageTest, EncodesA32BitSection)
{
    std::array<std::uint32_t, 2> elements = {0x01020304U, 0x11121314U};
    Message message;
    message.header.messageFormat = section32Bit;
    message.section32 = {sizeof elements, elements.data()};
    swapSections(message);
    EXPECT_EQ(hex(memoryOf(elements.data(), sizeof elements)), "04030201 14131211");
    EXPECT_EQ(hex(memoryOf(&message.section32.count, 4)), "08000000");
    EXPECT_EQ(message.section32.data, elements.data());
}

TEST(MessageTest, EncodesA16BitSection)
{
    std::array<std::uint16_t, 2> elements = {0x0102U, 0x1112U};
    Message message;
    message.header.messageFormat = section16Bit;
    message.section16 = {sizeof elements, elements.data()};
    swapSections(message);
    EXPECT_EQ(hex(memoryOf(elements.data(), sizeof elements)), "02011211");
    EXPECT_EQ(hex(memoryOf(&message.section16.count, 4)), "04000000");
    EXPECT_EQ(message.section16.data, elements.data());
}

TEST(MessageTest, EncodesOnlyTheCountOfAn8BitSection)
{
    std::array<char, 4> bytes = {'a', 'b', 'c', 'd'};
    Message message;
    message.header.messageFormat = section8Bit;
    message.section8 = {sizeof bytes, bytes.data()};
    swapSections(message);
    EXPECT_EQ(std::string(bytes.data(), bytes.size()), "abcd");
    EXPECT_EQ(hex(memoryOf(&message.section8.count, 4)), "04000000");
}

TEST(MessageTest, EncodesNoSectionThatItsFormatDoesNotAnnounce)
{
    std::array<std::uint32_t, 1> elements = {0x01020304U};
    Message message;
    message.header.messageFormat = section8Bit;
    message.section32 = {sizeof elements, elements.data()};
    swapSections(message);
    EXPECT_EQ(elements[0], 0x01020304U);
    EXPECT_EQ(message.section32.count, 4U);
}
