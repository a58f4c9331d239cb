// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/services/TarvelTcpFixture.h"
#include "unit/services/TimeReferenceSamples.h"

namespace
{

const std::string manual = timeReference("Manual", "10.1.2.3");
const std::string ntp = timeReference("Ntp", "10.9.9.9");

SampleHeader requestOf(std::size_t payload)
{
    return {.messageFormat = 1, .commandId = 17, .payloadLength = static_cast<std::uint32_t>(payload)};
}

class TimeReferenceSetTest : public TarvelTcpTest
{
protected:
    TimeReferenceSetTest() { uci.set("system.ntp.server", "10.1.2.3"); }

    void serveText(const std::string& text) { serve(textRequest(17, text)); }
    [[nodiscard]] bool isApplied() const { return !callsTo("flock").empty(); }
};

} // namespace

TEST_F(TimeReferenceSetTest, SetsTheClockInManualMode)
{
    serveText(manual);
    ASSERT_EQ(clock.settings().size(), 1U);
    EXPECT_EQ(clock.settings().front().tv_sec, sampleMoment);
}

TEST_F(TimeReferenceSetTest, AnswersSuccessWithoutAPayload)
{
    serveText(manual);
    EXPECT_EQ(hex(client.receive(20)), "81c39aff 01000504 11800101 0d0c0b0a 00000000");
    EXPECT_TRUE(client.hasNothing());
    EXPECT_TRUE(isConnected());
}

TEST_F(TimeReferenceSetTest, PassesTheServerOnUnchangedInNtpMode)
{
    serveText(ntp);
    EXPECT_EQ(shell.commands().at(1), "uci -q set system.ntp.server=10.9.9.9");
    EXPECT_TRUE(clock.settings().empty());
    expectStatus({.commandId = 17}, 1);
}

TEST_F(TimeReferenceSetTest, AsksForReplication)
{
    serveText(manual);
    EXPECT_TRUE(sandbox.exists("/var/timesettings.replication"));
}

TEST_F(TimeReferenceSetTest, RefusesAModeInOtherLetters)
{
    serveText("<TimeReferenceConfiguration Mode=\"NTP\" NtpServer=\"\" DateTime=\"2021-03-04T05:06:07\"/>");
    expectStatus({.commandId = 17}, 2);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Unsupported time reference mode \"NTP\""}}));
}

TEST_F(TimeReferenceSetTest, AnswersAFailedApplicationWithStatus2)
{
    failNext("clock_settime", EPERM);
    serveText(manual);
    expectStatus({.commandId = 17}, 2);
}

TEST_F(TimeReferenceSetTest, RefusesTwoSectionsAndDumpsTheHeader)
{
    const SampleHeader request = {.messageFormat = 3, .commandId = 17, .payloadLength = 12};
    serve(request.bytes());
    expectStatus(request, 2);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{
                               {LOG_WARNING, "NTPConfigSet message should only contain a 8-bit section!"}}));
    EXPECT_NE(out.find("Message format   ( 8bit): 0x3\n"), std::string::npos);
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20"}));
}

TEST_F(TimeReferenceSetTest, AcceptsAPayloadOf1024Bytes)
{
    const std::string padded = manual + std::string(1024 - 5 - manual.size(), ' ');
    serveText(padded);
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20", "1024"}));
    expectStatus(requestOf(1024), 1);
}

TEST_F(TimeReferenceSetTest, RefusesAPayloadOf1025BytesUnread)
{
    serve(requestOf(1025).bytes());
    expectStatus(requestOf(1025), 2);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Payload is too big"}}));
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20"}));
}

TEST_F(TimeReferenceSetTest, TakesTheBytesOfATooBigPayloadAsTheNextHeader)
{
    const SampleHeader payload = {.commandId = 0x55};
    serve(requestOf(1025).bytes() + payload.bytes());
    static_cast<void>(client.receive(20));
    dispatch();
    expectStatus(payload, 6);
}

TEST_F(TimeReferenceSetTest, GetsNoReplyWithoutAPayload)
{
    serve(requestOf(0).bytes());
    EXPECT_TRUE(client.hasNothing());
    EXPECT_TRUE(isConnected());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TimeReferenceSetTest, GetsNoReplyIfTheClientClosesInsideThePayload)
{
    client.send(requestOf(100).bytes() + Bytes(99));
    client.finishSending();
    dispatch();
    EXPECT_TRUE(client.hasNothing());
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"Client closed the connection"}));
}

TEST_F(TimeReferenceSetTest, FailsIfThePayloadCannotBeReceived)
{
    client.send(requestOf(100).bytes());
    passNext("recv");
    failNext("recv", EIO);
    dispatch();
    expectStatus(requestOf(100), 2);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("recv() failed: ") + std::strerror(EIO)}));
}

TEST_F(TimeReferenceSetTest, ClampsTheCountToWhatWasReceived)
{
    const std::string text = manual;
    const Bytes content(text.begin(), text.end());
    serve(requestOf(content.size() + 4).bytes() + little32(0xFFFFFFFF) + content);
    expectStatus(requestOf(0), 1);
}

TEST_F(TimeReferenceSetTest, CutsTheTextAtACountThatIsTooSmall)
{
    const Bytes content(manual.begin(), manual.end());
    serve(requestOf(content.size() + 4).bytes() + little32(10) + content);
    expectStatus(requestOf(0), 2);
    EXPECT_FALSE(isApplied());
}

TEST_F(TimeReferenceSetTest, ReadsThePayloadOfOneByteAsACountWithoutText)
{
    serve(requestOf(1).bytes() + Bytes{200});
    expectStatus(requestOf(1), 2);
    EXPECT_FALSE(isApplied());
}

TEST_F(TimeReferenceSetTest, NeverSeesThePayloadOfAnEarlierRequest)
{
    serveText(manual);
    static_cast<void>(client.receive(20));
    serve(requestOf(4).bytes() + little32(static_cast<std::uint32_t>(manual.size())));
    expectStatus(requestOf(4), 2);
}

TEST_F(TimeReferenceSetTest, LetsNothingOfTheXmlLibraryReachStandardError)
{
    serveText("<broken");
    expectStatus(requestOf(0), 2);
    EXPECT_EQ(err, "");
}
