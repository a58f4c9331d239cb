// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/ZetService.h"

#include "support/SystemTest.h"
#include "unit/protocol/HostHeader.h"

#include <array>

#include <syslog.h>

namespace
{

class NumberedService final : public ZetService
{
public:
    NumberedService(std::uint8_t device, std::uint8_t service)
    {
        config.deviceNumber = device;
        config.serviceNumber = service;
    }

    int open(const ServiceConfig& /*config*/) override { return 0; }
    int close() override { return 0; }
    int handleUnknownCommand(const MessageHeader& /*header*/) override { return 0; }
    int checkHeader(const MessageHeader& /*header*/) override { return 0; }

    using ZetService::config;
    using ZetService::hasOnlyTextSection;
};

SampleHeader built(std::uint8_t format, std::uint16_t commandId)
{
    const NumberedService service(5, 4);
    MessageHeader header = {};
    service.buildReplyHeader(header, format, commandId, Status::success, 1, 7, 15);
    return sampleOf(header);
}

const SampleHeader request = {.device = 9, .service = 8, .commandId = 0x0011, .sequenceId = 0xCAFE, .payloadLength = 3};

} // namespace

using ZetServiceTest = SystemTest;

TEST(ReplyHeaderTest, HasEveryFieldFilled)
{
    EXPECT_EQ(built(1, 1), (SampleHeader{.startPattern = 0xFF9AC381,
                                         .version = 1,
                                         .messageFormat = 1,
                                         .device = 5,
                                         .service = 4,
                                         .commandId = 0x8001,
                                         .status = 1,
                                         .commandVersion = 1,
                                         .sequenceId = 7,
                                         .payloadLength = 15}));
}

TEST(ReplyHeaderTest, CarriesTheServicesOwnNumbers)
{
    const NumberedService service(0x12, 0x34);
    MessageHeader reply = {};
    service.buildStatusReply(reply, hostHeader(request), Status::success);
    EXPECT_EQ(reply.device, 0x12);
    EXPECT_EQ(reply.service, 0x34);
}

TEST(ReplyHeaderTest, MarksCommand11AsAReply)
{
    EXPECT_EQ(built(0, 0x0011).commandId, 0x8011);
}

TEST(ReplyHeaderTest, KeepsTheReplyFlagOfARequestThatHasItAlready)
{
    EXPECT_EQ(built(0, 0x8011).commandId, 0x8011);
}

TEST(ReplyHeaderTest, KeepsTheLow15BitsOfTheCommand)
{
    EXPECT_EQ(built(0, 0x7FFF).commandId, 0xFFFF);
}

TEST(ReplyHeaderTest, DropsBits5And6OfTheFormat)
{
    EXPECT_EQ(built(0xFF, 1).messageFormat, 0x9F);
}

TEST(ReplyHeaderTest, OfAStatusReplyHasNoPayloadAndEchoesTheRequest)
{
    const NumberedService service(5, 4);
    MessageHeader reply = {};
    service.buildStatusReply(reply, hostHeader(request), Status::unknownCommand);
    EXPECT_EQ(sampleOf(reply), replyTo(request, 6));
}

TEST(ReplyHeaderTest, OfAStatusReplyMayTakeTheRequestsPlace)
{
    const NumberedService service(5, 4);
    MessageHeader header = hostHeader(request);
    service.buildStatusReply(header, header, Status::failure);
    EXPECT_EQ(sampleOf(header), replyTo(request, 2));
}

TEST(ReplyHeaderTest, OfATextReplyAnnouncesOne8BitSection)
{
    const NumberedService service(5, 4);
    MessageHeader reply = {};
    service.buildTextReply(reply, hostHeader(request), 15);
    SampleHeader expected = replyTo(request, 1);
    expected.messageFormat = 1;
    expected.payloadLength = 15;
    EXPECT_EQ(sampleOf(reply), expected);
}

TEST(ZetServiceNumbersTest, StartsWithoutAnyConfiguration)
{
    const NumberedService service(0, 0);
    EXPECT_EQ(service.config.bindDevice, 0);
    EXPECT_EQ(service.config.deviceName, nullptr);
    EXPECT_EQ(service.config.broadcast, 0);
}

TEST(StatusTest, HasTheNumbersOfTheProtocol)
{
    EXPECT_EQ(static_cast<int>(Status::success), 1);
    EXPECT_EQ(static_cast<int>(Status::failure), 2);
    EXPECT_EQ(static_cast<int>(Status::wrongVersion), 3);
    EXPECT_EQ(static_cast<int>(Status::wrongDevice), 4);
    EXPECT_EQ(static_cast<int>(Status::wrongService), 5);
    EXPECT_EQ(static_cast<int>(Status::unknownCommand), 6);
}

TEST_F(ZetServiceTest, AcceptsTheSingle8BitSectionSilently)
{
    CapturedOutput output;
    EXPECT_TRUE(NumberedService::hasOnlyTextSection(hostHeader({.messageFormat = 1}), "refused"));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(output.out(), "");
}

TEST_F(ZetServiceTest, DoesNotLookAtTheThreeHighFormatBits)
{
    EXPECT_TRUE(NumberedService::hasOnlyTextSection(hostHeader({.messageFormat = 0xE1}), "refused"));
}

TEST_F(ZetServiceTest, RefusesEveryOtherSetOfSections)
{
    CapturedOutput output;
    for (const std::uint8_t format : std::to_array<std::uint8_t>({0x00, 0x02, 0x03, 0x05, 0x09, 0x11, 0x1F})) {
        EXPECT_FALSE(NumberedService::hasOnlyTextSection(hostHeader({.messageFormat = format}), "refused"));
    }
}

TEST_F(ZetServiceTest, WarnsAndDumpsTheHeaderOfARefusedLayout)
{
    CapturedOutput output;
    EXPECT_FALSE(NumberedService::hasOnlyTextSection(hostHeader({.messageFormat = 3}), "100 % refused"));
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "100 % refused"}}));
    EXPECT_NE(output.out().find("Message format   ( 8bit): 0x3\n"), std::string::npos);
}
