// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/DatagramBuffer.h"

#include "support/SampleMessages.h"
#include "unit/protocol/HostHeader.h"

#include <cstring>

#include <gtest/gtest.h>

namespace
{

constexpr std::size_t longestText = DatagramBuffer::capacity - 20 - 4 - 1;

// As a received message that has been converted to host order.
void hold(DatagramBuffer& buffer, const SampleHeader& header, std::uint32_t count, const std::string& content)
{
    buffer.header() = hostHeader(header);
    std::memcpy(buffer.bytes().data() + 20, &count, sizeof count);
    std::memcpy(buffer.bytes().data() + 24, content.data(), content.size());
    buffer.setLength(24 + content.size());
}

} // namespace

TEST(DatagramBufferTest, HoldsNoSectionsBeforeAnythingCame)
{
    DatagramBuffer buffer;
    EXPECT_TRUE(buffer.sections().empty());
    EXPECT_EQ(buffer.text(), "");
}

TEST(DatagramBufferTest, HoldsNoSectionsForAMessageShorterThanAHeader)
{
    DatagramBuffer buffer;
    buffer.setLength(19);
    EXPECT_TRUE(buffer.sections().empty());
}

TEST(DatagramBufferTest, HasItsSectionsBehindTheHeader)
{
    DatagramBuffer buffer;
    buffer.setLength(25);
    EXPECT_EQ(buffer.sections().data(), buffer.bytes().data() + 20);
    EXPECT_EQ(buffer.sections().size(), 5U);
}

TEST(DatagramBufferTest, BoundsItsTextByTheCount)
{
    DatagramBuffer buffer;
    hold(buffer, {.messageFormat = 1, .payloadLength = 8}, 4, "textmore");
    EXPECT_EQ(buffer.text(), "text");
}

TEST(DatagramBufferTest, BoundsItsTextByTheBytesThatCame)
{
    DatagramBuffer buffer;
    hold(buffer, {.messageFormat = 1, .payloadLength = 5000}, 4000, "text");
    EXPECT_EQ(buffer.text(), "text");
}

TEST(DatagramBufferTest, KeepsANulInsideTheText)
{
    DatagramBuffer buffer;
    hold(buffer, {.messageFormat = 1, .payloadLength = 7}, 3, std::string("a\0b", 3));
    EXPECT_EQ(buffer.text(), std::string_view("a\0b", 3));
}

TEST(DatagramBufferTest, HasNoTextWithAPayloadLengthOfZero)
{
    DatagramBuffer buffer;
    hold(buffer, {.messageFormat = 1, .payloadLength = 0}, 4, "text");
    EXPECT_EQ(buffer.text(), "");
}

TEST(DatagramBufferTest, HasNoTextWhenTheCountIsCutOff)
{
    DatagramBuffer buffer;
    hold(buffer, {.messageFormat = 1, .payloadLength = 8}, 4, "text");
    buffer.setLength(23);
    EXPECT_EQ(buffer.text(), "");
}

TEST(DatagramBufferTest, NeverShowsAnEarlierText)
{
    DatagramBuffer buffer;
    hold(buffer, {.messageFormat = 1, .payloadLength = 8}, 4, "text");
    buffer.setLength(26);
    EXPECT_EQ(buffer.text(), "te");
}

TEST(DatagramBufferTest, WritesATextWithItsNulAndCountsIt)
{
    DatagramBuffer buffer;
    ASSERT_TRUE(buffer.setText("0123456789"));
    std::uint32_t count = 0;
    std::memcpy(&count, buffer.sections().data(), sizeof count);
    EXPECT_EQ(count, 11U);
    EXPECT_EQ(buffer.sections().size(), 15U);
    EXPECT_STREQ(reinterpret_cast<const char*>(buffer.sections().data()) + 4, "0123456789");
}

TEST(DatagramBufferTest, TakesATextThatJustFits)
{
    DatagramBuffer buffer;
    EXPECT_TRUE(buffer.setText(std::string(longestText, 'x')));
    EXPECT_EQ(buffer.sections().size(), DatagramBuffer::capacity - 20);
}

TEST(DatagramBufferTest, RefusesATextOfOneCharacterMore)
{
    DatagramBuffer buffer;
    hold(buffer, {.messageFormat = 1, .payloadLength = 8}, 4, "text");
    EXPECT_FALSE(buffer.setText(std::string(longestText + 1, 'x')));
    EXPECT_EQ(buffer.text(), "text");
}
