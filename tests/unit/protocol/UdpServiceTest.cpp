// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/protocol/UdpServiceFixture.h"

using UdpServiceOpenTest = SystemTest;

TEST_F(UdpServiceOpenTest, HasNoDescriptorBeforeItIsOpened)
{
    const UdpService service;
    EXPECT_EQ(service.descriptor(), -1);
}

TEST_F(UdpServiceOpenTest, BindsToTheNamedDeviceAndMayBroadcast)
{
    UdpService service;
    ServiceConfig config = anyUdpPort;
    config.bindDevice = 1;
    returnNext("setsockopt", 0);
    returnNext("setsockopt", 0);
    EXPECT_EQ(service.open(config), 0);
    EXPECT_EQ(callsTo("setsockopt"),
              (std::vector<std::string>{"SO_REUSEADDR 1", "SO_BINDTODEVICE lo", "SO_BROADCAST 1"}));
}

TEST_F(UdpServiceOpenTest, BindsToNoDeviceIfNotAskedTo)
{
    UdpService service;
    service.open(anyUdpPort);
    EXPECT_EQ(callsTo("setsockopt"), (std::vector<std::string>{"SO_REUSEADDR 1", "SO_BROADCAST 1"}));
}

TEST_F(UdpServiceOpenTest, MayNotBroadcastIfNotAskedTo)
{
    UdpService service;
    ServiceConfig config = anyUdpPort;
    config.broadcast = 0;
    EXPECT_EQ(service.open(config), 0);
    EXPECT_EQ(callsTo("setsockopt"), (std::vector<std::string>{"SO_REUSEADDR 1"}));
}

TEST_F(UdpServiceOpenTest, FailsIfItMayNotBroadcast)
{
    UdpService service;
    passNext("setsockopt");
    failNext("setsockopt", EPERM);
    EXPECT_EQ(service.open(anyUdpPort), -1);
}

TEST_F(UdpServiceOpenTest, LogsItsSetUp)
{
    UdpService service;
    service.open(anyUdpPort);
    EXPECT_EQ(log.infos(), (std::vector<std::string>{
                               "Datagram socket (" + std::to_string(service.descriptor()) + ") successfully created",
                               "Server socket options successfully set", "Bind() was successful"}));
}

TEST_F(UdpServiceOpenTest, ClosesItsSocket)
{
    UdpService service;
    service.open(anyUdpPort);
    const std::string expected = "Socket (" + std::to_string(service.descriptor()) + ") successfully closed";
    log.clear();
    EXPECT_EQ(service.close(), 0);
    EXPECT_EQ(log.infos(), (std::vector<std::string>{expected}));
    EXPECT_EQ(service.descriptor(), -1);
}

TEST_F(UdpServiceOpenTest, ClosesNothingIfItWasNeverOpened)
{
    UdpService service;
    EXPECT_EQ(service.close(), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UdpServiceTest, ReceivesAHeaderInHostOrder)
{
    const SampleHeader sent = {.commandId = 0x0102, .sequenceId = 0x01020304, .payloadLength = 0};
    receive(sent.bytes());
    EXPECT_EQ(sampleOf(service.datagram->header()), sent);
}

TEST_F(UdpServiceTest, RemembersTheSender)
{
    receive(SampleHeader{}.bytes());
    EXPECT_EQ(service.sender.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(service.sender.sin_port, htons(requester.port()));
}

TEST_F(UdpServiceTest, LogsWhatArrivedAndFromWhere)
{
    requester.send(boundPort(service.descriptor()), textRequest(4, "text"));
    service.receiveDatagram();
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_INFO, arrival(29)}}));
}

TEST_F(UdpServiceTest, ReadsUpTo4096Bytes)
{
    requester.send(boundPort(service.descriptor()), SampleHeader{}.bytes() + Bytes(4077, 'x'));
    EXPECT_EQ(service.receiveDatagram(), 0);
    EXPECT_EQ(callsTo("recvfrom"), (std::vector<std::string>{"4096"}));
    EXPECT_EQ(log.infos(), (std::vector<std::string>{arrival(4096)}));
}

TEST_F(UdpServiceTest, ReadsTheTextOfARequest)
{
    receive(textRequest(4, "text"));
    EXPECT_EQ(service.datagram->text(), std::string_view("text\0", 5));
}

TEST_F(UdpServiceTest, ReadsTheSameTextWithBit7Set)
{
    Bytes request = textRequest(4, "text");
    request[5] |= 0x80;
    receive(request);
    EXPECT_EQ(service.datagram->text(), std::string_view("text\0", 5));
}

TEST_F(UdpServiceTest, LeavesTheSectionsAsTheyCameWithBit7Set)
{
    const Bytes elements = section(Bytes{1, 2, 3, 4});
    receive(SampleHeader{.messageFormat = 0x84, .payloadLength = 8}.bytes() + elements);
    EXPECT_EQ(std::memcmp(service.datagram->sections().data(), elements.data(), 8), 0);
}

TEST_F(UdpServiceTest, DecodesA32BitSection)
{
    receive(SampleHeader{.messageFormat = 4, .payloadLength = 8}.bytes() + section(Bytes{4, 3, 2, 1}));
    std::uint32_t element = 0;
    std::memcpy(&element, service.datagram->sections().data() + 4, sizeof element);
    EXPECT_EQ(element, 0x01020304U);
}

TEST_F(UdpServiceTest, DoesNotTouchTheBytesBehindTheHeaderWithAPayloadLengthOfZero)
{
    const Bytes behind = {4, 0, 0, 0, 1, 2, 3, 4};
    receive(SampleHeader{.messageFormat = 4, .payloadLength = 0}.bytes() + behind);
    EXPECT_EQ(std::memcmp(service.datagram->sections().data(), behind.data(), behind.size()), 0);
}

TEST_F(UdpServiceTest, BoundsATextByTheBytesThatCame)
{
    receive(SampleHeader{.messageFormat = 1, .payloadLength = 4000}.bytes() + little32(3996) + Bytes{'a', 'b'});
    EXPECT_EQ(service.datagram->text(), "ab");
}

TEST_F(UdpServiceTest, ShowsNothingOfAnEarlierDatagram)
{
    receive(textRequest(9, "text"));
    receive(SampleHeader{.messageFormat = 1, .commandId = 9, .payloadLength = 9}.bytes());
    EXPECT_EQ(service.datagram->text(), "");
}

TEST_F(UdpServiceTest, DropsADatagramThatIsTooShortForAHeader)
{
    requester.send(boundPort(service.descriptor()), Bytes(19, 1));
    EXPECT_EQ(service.receiveDatagram(), -1);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{
                  {LOG_INFO, arrival(19)}, {LOG_WARNING, "Datagram of 19 bytes is too short for a header, drop it"}}));
    EXPECT_TRUE(requester.hasNothing());
}

TEST_F(UdpServiceTest, DropsAnEmptyDatagram)
{
    requester.send(boundPort(service.descriptor()), {});
    EXPECT_EQ(service.receiveDatagram(), -1);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Datagram of 0 bytes is too short for a header, drop it"}));
}

TEST_F(UdpServiceTest, ReportsAFailedReceive)
{
    failNext("recvfrom", EIO);
    EXPECT_EQ(service.receiveDatagram(), -1);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, std::string("recvfrom() failed: ") + std::strerror(EIO)}}));
}

TEST_F(UdpServiceTest, ForgetsTheSenderWhenReceivingFails)
{
    receive(SampleHeader{}.bytes());
    failNext("recvfrom", EIO);
    service.receiveDatagram();
    EXPECT_EQ(service.sender.sin_port, 0);
}
