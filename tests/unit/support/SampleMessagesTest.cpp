// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/SampleMessages.h"

#include <gtest/gtest.h>

TEST(SampleMessagesTest, AHeaderTravelsLeastSignificantByteFirst)
{
    const SampleHeader header{.messageFormat = 1, .commandId = 0x8011, .status = 2, .payloadLength = 15};
    EXPECT_EQ(hex(header.bytes()), "81c39aff 01010504 11800201 0d0c0b0a 0f000000");
}

TEST(SampleMessagesTest, AHeaderIsReadBackAsWritten)
{
    const SampleHeader header{.device = 9, .commandId = 17, .sequenceId = 77};
    EXPECT_EQ(SampleHeader::from(header.bytes()), header);
}

TEST(SampleMessagesTest, ATextIsCountedWithItsTerminator)
{
    const Bytes message = textRequest(17, "0123456789");
    EXPECT_EQ(SampleHeader::from(message).payloadLength, 15U);
    EXPECT_EQ(message[SampleHeader::size], 11);
    EXPECT_EQ(message.back(), 0);
    EXPECT_EQ(textOf(message), "0123456789");
}

TEST(SampleMessagesTest, ATextOfAnotherLengthThanAnnouncedIsRefused)
{
    Bytes message = textRequest(17, "abc");
    message.push_back(0);
    EXPECT_THROW((void)textOf(message), std::invalid_argument);
}
