// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/protocol/UdpServiceFixture.h"
#include "util/Hardened.h"

namespace
{

using UdpServiceSendTest = UdpServiceTest;
using UdpServiceUnknownCommandTest = UdpServiceTest;

class UdpServiceCheckTest : public UdpServiceTest
{
protected:
    int check(const SampleHeader& request)
    {
        receive(request.bytes());
        return service.checkHeader(service.datagram->header());
    }

    void expectOnlyAnswer(const SampleHeader& request, std::uint8_t status)
    {
        EXPECT_EQ(hex(requester.receive()), hex(replyTo(request, status).bytes()));
        EXPECT_TRUE(requester.hasNothing());
    }
};

} // namespace

TEST_F(UdpServiceCheckTest, AcceptsARequestForItsNumbersSilently)
{
    EXPECT_EQ(check({.startPattern = 0x12345678, .commandId = 3}), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(requester.hasNothing());
}

TEST_F(UdpServiceCheckTest, AnswersAWrongServiceWithStatus5)
{
    const SampleHeader request = {.service = 3};
    EXPECT_EQ(check(request), -1);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, "Wrong service field in header: 3 instead of 4"}}));
    expectOnlyAnswer(request, 5);
}

TEST_F(UdpServiceCheckTest, AnswersAWrongVersionWithStatus3)
{
    const SampleHeader request = {.version = 2};
    EXPECT_EQ(check(request), -1);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, "Wrong version field in header: 2 instead of 1"}}));
    expectOnlyAnswer(request, 3);
}

TEST_F(UdpServiceCheckTest, LogsServiceAndVersionAndAnswersTheVersion)
{
    const SampleHeader request = {.version = 255, .service = 200};
    EXPECT_EQ(check(request), -1);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Wrong service field in header: 200 instead of 4",
                                                        "Wrong version field in header: 255 instead of 1"}));
    expectOnlyAnswer(request, 3);
}

TEST_F(UdpServiceCheckTest, AnswersAWrongVersionEvenForAnotherDevice)
{
    const SampleHeader request = {.version = 2, .device = 7};
    EXPECT_EQ(check(request), -1);
    expectOnlyAnswer(request, 3);
}

TEST_F(UdpServiceCheckTest, DropsADatagramForAnotherDevice)
{
    EXPECT_EQ(check({.device = 7}), 1);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_INFO, "Got datagram for device 7, drop it"}}));
    EXPECT_TRUE(requester.hasNothing());
}

TEST_F(UdpServiceCheckTest, DropsAnotherCardsReply)
{
    EXPECT_EQ(check({.commandId = 0x8003}), 1);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_INFO, "Got a response from another card, drop it"}}));
    EXPECT_TRUE(requester.hasNothing());
}

TEST_F(UdpServiceCheckTest, LogsDeviceAndReplyFlagOfOneDatagram)
{
    EXPECT_EQ(check({.device = 7, .commandId = 0x8003}), 1);
    EXPECT_EQ(log.infos(), (std::vector<std::string>{"Got datagram for device 7, drop it",
                                                     "Got a response from another card, drop it"}));
}

TEST_F(UdpServiceCheckTest, AnswersTheSenderItself)
{
    check({.service = 3});
    EXPECT_EQ(callsTo("sendto"), (std::vector<std::string>{"20 127.0.0.1:" + std::to_string(requester.port())}));
}

TEST_F(UdpServiceUnknownCommandTest, IsAnsweredToTheSenderWithStatus6)
{
    const SampleHeader request = {.commandId = 0x0042};
    receive(request.bytes());
    EXPECT_EQ(service.handleUnknownCommand(service.datagram->header()), 0);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Unknown command ID: 0x42"}}));
    EXPECT_EQ(hex(requester.receive()), "81c39aff 01000504 42800601 0d0c0b0a 00000000");
    EXPECT_EQ(callsTo("sendto"), (std::vector<std::string>{"20 127.0.0.1:" + std::to_string(requester.port())}));
}

TEST_F(UdpServiceUnknownCommandTest, IsLoggedBeforeItIsAnswered)
{
    receive(SampleHeader{.commandId = 0x0042}.bytes());
    forgetCalls();
    service.handleUnknownCommand(service.datagram->header());
    EXPECT_EQ(orderOf({"log", "sendto"}),
              (std::vector<std::string>{"log: Unknown command ID: 0x42",
                                        "sendto: 20 127.0.0.1:" + std::to_string(requester.port())}));
}

TEST_F(UdpServiceUnknownCommandTest, FailsIfTheReplyCannotBeSent)
{
    receive(SampleHeader{.commandId = 0x0042}.bytes());
    failNext("sendto", ENETUNREACH);
    EXPECT_EQ(service.handleUnknownCommand(service.datagram->header()), -1);
}

TEST_F(UdpServiceSendTest, SendsTheTextInTheBuffer)
{
    ASSERT_TRUE(service.datagram->setText("0123456789"));
    service.datagram->header() = hostHeader({.messageFormat = 1, .commandId = 0x8003, .payloadLength = 15});
    EXPECT_EQ(service.sendDatagram(htonl(INADDR_LOOPBACK), requester.port()), 0);
    EXPECT_EQ(hex(requester.receive()),
              "81c39aff 01010504 03800001 0d0c0b0a 0f000000 0b000000 30313233 34353637 383900");
}

TEST_F(UdpServiceSendTest, EncodesASectionOfEachWidthAsItTravelled)
{
    const Bytes sections = section(Bytes{8, 7, 6, 5, 4, 3, 2, 1}) + section(Bytes{4, 3, 2, 1}) + section(Bytes{2, 1}) +
                           section(Bytes{'x'});
    const SampleHeader header = {.messageFormat = 0x0F, .payloadLength = static_cast<std::uint32_t>(sections.size())};
    receive(header.bytes() + sections);
    service.sendDatagram(htonl(INADDR_LOOPBACK), requester.port());
    EXPECT_EQ(hex(requester.receive()), hex(header.bytes() + sections));
}

TEST_F(UdpServiceSendTest, ClearsBit7OfTheFormat)
{
    service.buildReplyHeader(service.datagram->header(), 0xFF, 1, Status::success, 1, 7, 0);
    service.sendDatagram(htonl(INADDR_LOOPBACK), requester.port());
    EXPECT_EQ(SampleHeader::from(requester.receive()).messageFormat, 0x1F);
}

TEST_F(UdpServiceSendTest, SendsToTheCardsOwnPortUnlessTheBuildIsHardened)
{
    EXPECT_EQ(service.sendDatagram(htonl(INADDR_LOOPBACK), 50003), 0);
    EXPECT_EQ(callsTo("sendto").size(), hardened ? 0U : 1U);
    if (hardened) {
        EXPECT_EQ(log.lines(), (Lines{{LOG_INFO, "Nothing is sent to port 50003, which is a card's"}}));
    }
}

TEST_F(UdpServiceSendTest, FailsIfSendingFails)
{
    failNext("sendto", ENETUNREACH);
    EXPECT_EQ(service.sendDatagram(htonl(INADDR_LOOPBACK), requester.port()), -1);
    EXPECT_EQ(log.warnings(),
              (std::vector<std::string>{std::string("sendto() failed: ") + std::strerror(ENETUNREACH)}));
}

TEST_F(UdpServiceSendTest, SucceedsWithATruncatedDatagram)
{
    limitNext("sendto", 19);
    EXPECT_EQ(service.sendDatagram(htonl(INADDR_LOOPBACK), requester.port()), 0);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Datagram has been truncated by sendto()"}));
}
