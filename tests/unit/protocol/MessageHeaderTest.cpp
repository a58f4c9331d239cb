// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/protocol/HostHeader.h"

#include "support/CapturedOutput.h"

#include <cstring>
#include <iostream>

#include <gtest/gtest.h>

namespace
{

constexpr SampleHeader everyFieldDiffers = {.version = 0x11,
                                            .messageFormat = 0x22,
                                            .device = 0x33,
                                            .service = 0x44,
                                            .commandId = 0x5566,
                                            .status = 0x77,
                                            .commandVersion = 0x88,
                                            .sequenceId = 0x99AABBCC,
                                            .payloadLength = 0x01020304};

Bytes memoryOf(const MessageHeader& header)
{
    Bytes bytes(headerSize);
    std::memcpy(bytes.data(), &header, headerSize);
    return bytes;
}

std::string dumpOf(const SampleHeader& sample)
{
    CapturedOutput output;
    dumpHeader(hostHeader(sample));
    return output.out();
}

} // namespace

TEST(MessageHeaderTest, TravelsWithTheLeastSignificantByteOfEachFieldFirst)
{
    MessageHeader header = hostHeader(everyFieldDiffers);
    swapHeaderWords(header);
    EXPECT_EQ(hex(memoryOf(header)), "81c39aff 11223344 66557788 ccbbaa99 04030201");
}

TEST(MessageHeaderTest, IsReadFromTheWireIntoHostOrder)
{
    MessageHeader header = {};
    std::memcpy(&header, everyFieldDiffers.bytes().data(), headerSize);
    swapHeaderWords(header);
    EXPECT_EQ(sampleOf(header), everyFieldDiffers);
}

TEST(MessageHeaderTest, IsUnchangedAfterTwoConversions)
{
    MessageHeader header = hostHeader(everyFieldDiffers);
    swapHeaderWords(header);
    swapHeaderWords(header);
    EXPECT_EQ(sampleOf(header), everyFieldDiffers);
}

TEST(MessageHeaderTest, IsDumpedInTenLabelledLines)
{
    EXPECT_EQ(dumpOf(everyFieldDiffers), "Start pattern    (32bit): 0xff9ac381\n"
                                         "Version          ( 8bit): 0x11\n"
                                         "Message format   ( 8bit): 0x22\n"
                                         "Device           ( 8bit): 0x33\n"
                                         "Service          ( 8bit): 0x44\n"
                                         "Command ID       (16bit): 0x5566\n"
                                         "Status           ( 8bit): 0x77\n"
                                         "command version  ( 8bit): 0x88\n"
                                         "Sequence ID      (32bit): 0x99aabbcc\n"
                                         "Payload length   (32bit): 16909060\n");
}

TEST(MessageHeaderTest, IsDumpedWithoutLeadingZeros)
{
    EXPECT_EQ(dumpOf({.startPattern = 0x1,
                      .version = 1,
                      .messageFormat = 1,
                      .device = 5,
                      .service = 4,
                      .commandId = 0x8001,
                      .status = 1,
                      .commandVersion = 1,
                      .sequenceId = 7,
                      .payloadLength = 15}),
              "Start pattern    (32bit): 0x1\n"
              "Version          ( 8bit): 0x1\n"
              "Message format   ( 8bit): 0x1\n"
              "Device           ( 8bit): 0x5\n"
              "Service          ( 8bit): 0x4\n"
              "Command ID       (16bit): 0x8001\n"
              "Status           ( 8bit): 0x1\n"
              "command version  ( 8bit): 0x1\n"
              "Sequence ID      (32bit): 0x7\n"
              "Payload length   (32bit): 15\n");
}

TEST(MessageHeaderTest, IsDumpedWithPrintableBytesAsNumbers)
{
    EXPECT_NE(dumpOf({.version = 'A'}).find("Version          ( 8bit): 0x41\n"), std::string::npos);
}

TEST(MessageHeaderTest, LeavesStandardOutputInDecimalModeAfterADump)
{
    CapturedOutput output;
    dumpHeader(hostHeader({}));
    std::cout << 255 << std::flush;
    EXPECT_TRUE(output.out().ends_with("Payload length   (32bit): 0\n255"));
}
