// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/services/TarvelUdpFixture.h"

#include <cstdlib>

namespace
{

using TarvelServiceUdpTest = TarvelUdpTest;
using HostNameTest = SystemTest;

const std::string forThisCard = "<RebootCard From=\"mgmt\" To=\"card7\"/>";

} // namespace

TEST_F(HostNameTest, IsReadOnceFromTheSettings)
{
    uci.set("system.@system[0].hostname", "card7");
    const TarvelServiceUdp service;
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{"uci -q get system.@system[0].hostname > /tmp/uci.tmp"}));
}

TEST_F(HostNameTest, EndsTheProcessIfItCannotBeRead)
{
    EXPECT_DEATH(const TarvelServiceUdp service, "");
}

TEST_F(HostNameTest, EndsTheProcessByNoExceptionThatCouldBeCaught)
{
    EXPECT_DEATH(
        {
            try {
                const TarvelServiceUdp service;
            } catch (...) {
                std::_Exit(0);
            }
        },
        "");
}

TEST_F(TarvelServiceUdpTest, KeepsItsNameWhenTheSettingChanges)
{
    uci.set("system.@system[0].hostname", "card8");
    EXPECT_EQ(serve(textRequest(9, forThisCard)), 0);
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{"reboot -d 2 &"}));
}

TEST_F(TarvelServiceUdpTest, AnswersAnUnknownCommandToTheSenderInsteadOfBroadcasting)
{
    const SampleHeader request = {.commandId = 5};
    EXPECT_EQ(serve(request.bytes()), 0);
    EXPECT_EQ(callsTo("sendto"), (std::vector<std::string>{"20 127.0.0.1:" + std::to_string(requester.port())}));
    EXPECT_EQ(hex(requester.receive()), hex(replyTo(request, 6).bytes()));
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Unknown command ID: 0x5"}}));
}

TEST_F(TarvelServiceUdpTest, DoesNotKnowTheConnectionCommands)
{
    for (const std::uint16_t commandId : {std::uint16_t{1}, std::uint16_t{8}, std::uint16_t{17}}) {
        serve(SampleHeader{.commandId = commandId}.bytes());
        EXPECT_EQ(SampleHeader::from(requester.receive()).status, 6);
    }
}

TEST_F(TarvelServiceUdpTest, PassesAFailedReceiveThrough)
{
    failNext("recvfrom", EIO);
    EXPECT_EQ(service->processDatagram(), -1);
    expectNoReply();
}

TEST_F(TarvelServiceUdpTest, PassesADroppedDatagramThrough)
{
    EXPECT_EQ(serve(SampleHeader{.device = 7, .commandId = 9}.bytes()), 1);
    expectNoReply();
}

TEST_F(TarvelServiceUdpTest, DropsAnotherCardsReplyToACommandItKnows)
{
    EXPECT_EQ(serve(SampleHeader{.commandId = 0x8009}.bytes()), 1);
    expectNoReply();
}

TEST_F(TarvelServiceUdpTest, PassesARefusedHeaderThrough)
{
    EXPECT_EQ(serve(SampleHeader{.version = 2, .commandId = 9}.bytes()), -1);
    EXPECT_EQ(SampleHeader::from(requester.receive()).status, 3);
}

TEST_F(TarvelServiceUdpTest, DropsADatagramShorterThanAHeader)
{
    EXPECT_EQ(serve(Bytes(19)), -1);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{
                            {LOG_WARNING, "Datagram of 19 bytes is too short for a header, drop it"}}));
    expectNoReply();
}

TEST_F(TarvelServiceUdpTest, DropsARequestForAnotherCardAndSaysSo)
{
    EXPECT_EQ(serve(textRequest(3, "<IpConfiguration From=\"mgmt\" To=\"card8\"/>")), 0);
    EXPECT_EQ(logged(),
              (std::vector<CapturedLog::Line>{{LOG_INFO, "Message is for \"card8\" not for me \"card7\", drop it"}}));
    expectNoReply();
}

TEST_F(TarvelServiceUdpTest, TakesANameInOtherLettersForAnotherCard)
{
    EXPECT_EQ(serve(textRequest(9, "<RebootCard From=\"mgmt\" To=\"Card7\"/>")), 0);
    expectNoReply();
}

TEST_F(TarvelServiceUdpTest, TakesALongerNameForAnotherCard)
{
    EXPECT_EQ(serve(textRequest(9, "<RebootCard From=\"mgmt\" To=\"card77\"/>")), 0);
    expectNoReply();
}

TEST_F(TarvelServiceUdpTest, TakesAnEmptyTargetForAnotherCard)
{
    EXPECT_EQ(serve(textRequest(9, "<RebootCard From=\"mgmt\" To=\"\"/>")), 0);
    EXPECT_EQ(logged(),
              (std::vector<CapturedLog::Line>{{LOG_INFO, "Message is for \"\" not for me \"card7\", drop it"}}));
}

TEST_F(TarvelServiceUdpTest, AnswersARequestWithoutATargetWithStatus2)
{
    EXPECT_EQ(serve(textRequest(9, "<RebootCard From=\"mgmt\"/>")), -1);
    expectBroadcast({.commandId = 9}, 2);
    EXPECT_TRUE(shell.commands().empty());
}

TEST_F(TarvelServiceUdpTest, AnswersAMissingSectionWithStatus2)
{
    EXPECT_EQ(serve(SampleHeader{.messageFormat = 1, .commandId = 9}.bytes()), -1);
    expectBroadcast({.commandId = 9}, 2);
}

TEST_F(TarvelServiceUdpTest, ReadsATextWithBit7Set)
{
    Bytes request = textRequest(9, forThisCard);
    request[5] |= 0x80;
    EXPECT_EQ(serve(request), 0);
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{"reboot -d 2 &"}));
}

TEST_F(TarvelServiceUdpTest, ReadsATextUpToItsFirstNul)
{
    EXPECT_EQ(serve(textRequest(9, forThisCard + std::string(1, '\0') + "<junk")), 0);
    EXPECT_EQ(shell.commands().size(), 1U);
}

TEST_F(TarvelServiceUdpTest, ReadsATextWithoutItsNul)
{
    const Bytes content(forThisCard.begin(), forThisCard.end());
    const SampleHeader request = {
        .messageFormat = 1, .commandId = 9, .payloadLength = static_cast<std::uint32_t>(content.size()) + 4};
    EXPECT_EQ(serve(request.bytes() + section(content)), 0);
    EXPECT_EQ(shell.commands().size(), 1U);
}

TEST_F(TarvelServiceUdpTest, RepliesWithTheCommonFailure)
{
    serve(textRequest(9, "<RebootCard From=\"mgmt\"/>"));
    EXPECT_EQ(hex(requester.receive()), "81c39aff 01000504 09800201 0d0c0b0a 00000000");
}

TEST_F(TarvelServiceUdpTest, TellsWhetherTheCommonFailureWasSent)
{
    serve(textRequest(9, "<RebootCard From=\"mgmt\" To=\"card8\"/>"));
    EXPECT_EQ(service->sendFailureReply(), 0);
    failNext("sendto", ENETUNREACH);
    EXPECT_EQ(service->sendFailureReply(), -1);
}

TEST_F(TarvelServiceUdpTest, LetsNothingOfTheXmlLibraryReachStandardError)
{
    EXPECT_EQ(serve(textRequest(9, "<broken")), -1);
    EXPECT_EQ(err, "");
}
