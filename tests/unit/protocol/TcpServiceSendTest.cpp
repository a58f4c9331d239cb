// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/protocol/TcpServiceFixture.h"

#include <array>

namespace
{

using TcpServiceSendTest = TcpServiceTest;
using TcpServiceUnknownCommandTest = TcpServiceTest;

class FourSections
{
public:
    FourSections()
    {
        message.header = hostHeader({.messageFormat = 0x0F, .payloadLength = 38});
        message.section64 = {8, &long64};
        message.section32 = {4, &long32};
        message.section16 = {4, short16.data()};
        message.section8 = {6, text.data()};
    }

    Message message;

private:
    std::uint64_t long64 = 0x0102030405060708U;
    std::uint32_t long32 = 0x11121314U;
    std::array<std::uint16_t, 2> short16 = {0x2122, 0x2324};
    std::array<char, 6> text = {'h', 'e', 'l', 'l', 'o', '\0'};
};

Message textOfTenCharacters(std::span<char> buffer)
{
    Message message;
    message.header = hostHeader({.messageFormat = 1, .commandId = 0x8001});
    message.header.payloadLength = message.setText(buffer, "0123456789");
    return message;
}

} // namespace

TEST_F(TcpServiceSendTest, SendsExactly20BytesWithoutAPayload)
{
    Message message;
    message.header = hostHeader({.commandId = 0x8001, .status = 1});
    EXPECT_EQ(service.sendMessage(message), 0);
    EXPECT_EQ(callsTo("send"), (std::vector<std::string>{"20"}));
    EXPECT_EQ(hex(client.receive(20)), "81c39aff 01000504 01800101 0d0c0b0a 00000000");
}

TEST_F(TcpServiceSendTest, SendsNoSectionWithAPayloadLengthOfZero)
{
    std::array<char, 8> buffer = {};
    Message message;
    static_cast<void>(message.setText(buffer, "text"));
    message.header = hostHeader({.messageFormat = 1, .payloadLength = 0});
    service.sendMessage(message);
    EXPECT_EQ(callsTo("send"), (std::vector<std::string>{"20"}));
}

TEST_F(TcpServiceSendTest, SendsATextOfTenCharactersAsElevenBytes)
{
    std::array<char, 64> buffer;
    Message message = textOfTenCharacters(buffer);
    service.sendMessage(message);
    EXPECT_EQ(hex(client.receive(35)),
              "81c39aff 01010504 01800001 0d0c0b0a 0f000000 0b000000 30313233 34353637 383900");
}

TEST_F(TcpServiceSendTest, SendsTheHeaderTheCountAndTheTextEachByItself)
{
    std::array<char, 64> buffer;
    Message message = textOfTenCharacters(buffer);
    service.sendMessage(message);
    EXPECT_EQ(callsTo("send"), (std::vector<std::string>{"20 MSG_MORE", "4 MSG_MORE", "11"}));
}

TEST_F(TcpServiceSendTest, SendsTheSectionsInTheOrder64Then32Then16Then8Bit)
{
    FourSections sections;
    service.sendMessage(sections.message);
    EXPECT_EQ(hex(client.receive(58)), "81c39aff 010f0504 01000001 0d0c0b0a 26000000 "
                                       "08000000 08070605 04030201 04000000 14131211 "
                                       "04000000 22212423 06000000 68656c6c 6f00");
}

TEST_F(TcpServiceSendTest, AnnouncesMoreWithEveryPieceButTheLast)
{
    FourSections sections;
    service.sendMessage(sections.message);
    EXPECT_EQ(callsTo("send"), (std::vector<std::string>{"20 MSG_MORE", "4 MSG_MORE", "8 MSG_MORE", "4 MSG_MORE",
                                                         "4 MSG_MORE", "4 MSG_MORE", "4 MSG_MORE", "4 MSG_MORE", "6"}));
}

TEST_F(TcpServiceSendTest, AnnouncesNoMoreWithTheCountOfAnEmptyLastSection)
{
    Message message;
    message.header = hostHeader({.messageFormat = 1, .payloadLength = 4});
    service.sendMessage(message);
    EXPECT_EQ(callsTo("send"), (std::vector<std::string>{"20 MSG_MORE", "4"}));
}

TEST_F(TcpServiceSendTest, AnnouncesNoMoreWithTheHeaderIfNoSectionFollows)
{
    Message message;
    message.header = hostHeader({.messageFormat = 0, .payloadLength = 4});
    service.sendMessage(message);
    EXPECT_EQ(callsTo("send"), (std::vector<std::string>{"20"}));
}

TEST_F(TcpServiceSendTest, ClearsBit7OfTheFormat)
{
    Message message;
    service.buildReplyHeader(message.header, 0xFF, 1, Status::success, 1, 7, 0);
    service.sendMessage(message);
    EXPECT_EQ(SampleHeader::from(client.receive(20)).messageFormat, 0x1F);
}

TEST_F(TcpServiceSendTest, SucceedsEvenIfThePeerHasGone)
{
    failNext("send", EPIPE);
    Message message;
    message.header = hostHeader({});
    EXPECT_EQ(service.sendMessage(message), 0);
    EXPECT_EQ(log.infos(), (std::vector<std::string>{"Client closed the connection"}));
}

TEST_F(TcpServiceSendTest, SendsTheRestEvenIfAPieceFails)
{
    failNext("send", ENOBUFS);
    std::array<char, 64> buffer;
    Message message = textOfTenCharacters(buffer);
    EXPECT_EQ(service.sendMessage(message), 0);
    EXPECT_EQ(callsTo("send").size(), 3U);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("send() failed: ") + std::strerror(ENOBUFS)}));
}

TEST_F(TcpServiceSendTest, SendsAStatusReplyOf20Bytes)
{
    const SampleHeader request = {.messageFormat = 1, .commandId = 8, .payloadLength = 99};
    EXPECT_EQ(service.sendStatus(hostHeader(request), Status::success), 0);
    EXPECT_EQ(hex(client.receive(20)), hex(replyTo(request, 1).bytes()));
    EXPECT_TRUE(client.hasNothing());
}

TEST_F(TcpServiceUnknownCommandTest, IsAnsweredWithStatus6)
{
    const SampleHeader request = {.commandId = 0x42};
    EXPECT_EQ(service.handleUnknownCommand(hostHeader(request)), 0);
    EXPECT_EQ(hex(client.receive(20)), hex(replyTo(request, 6).bytes()));
}

TEST_F(TcpServiceUnknownCommandTest, IsLoggedInHexadecimal)
{
    service.handleUnknownCommand(hostHeader({.commandId = 0x1F2}));
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Unknown command ID: 0x1f2"}}));
}

TEST_F(TcpServiceUnknownCommandTest, HasItsPayloadDrainedInPiecesOf4096Bytes)
{
    client.send(Bytes(10000, 0xAA));
    service.handleUnknownCommand(hostHeader({.commandId = 2, .payloadLength = 10000}));
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"4096", "4096", "1808"}));
}

TEST_F(TcpServiceUnknownCommandTest, HasItsPayloadDrainedBeforeTheReply)
{
    client.send(Bytes(10, 0xAA));
    service.handleUnknownCommand(hostHeader({.commandId = 2, .payloadLength = 10}));
    EXPECT_EQ(orderOf({"recv", "log", "send"}),
              (std::vector<std::string>{"recv: 10", "log: Unknown command ID: 0x2", "send: 20"}));
}

TEST_F(TcpServiceUnknownCommandTest, GetsNoReplyIfThePayloadEndsEarly)
{
    client.send(Bytes(9, 0xAA));
    client.finishSending();
    EXPECT_EQ(service.handleUnknownCommand(hostHeader({.commandId = 2, .payloadLength = 10})), -1);
    EXPECT_TRUE(client.hasNothing());
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"Client closed the connection"}));
}

TEST_F(TcpServiceUnknownCommandTest, GetsNoReplyIfThePayloadCannotBeReceived)
{
    failNext("recv", EIO);
    EXPECT_EQ(service.handleUnknownCommand(hostHeader({.commandId = 2, .payloadLength = 10})), -1);
    EXPECT_TRUE(client.hasNothing());
}
