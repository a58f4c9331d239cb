// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TimeReferenceMessages.h"
#include "unit/services/TarvelTcpFixture.h"
#include "unit/services/TimeReferenceSamples.h"

namespace
{

constexpr SampleHeader timeReferenceGet = {.commandId = 16};

class TimeReferenceGetTest : public TarvelTcpTest
{
protected:
    TimeReferenceGetTest()
    {
        clock.stopAt(sampleMoment);
        uci.set("system.ntp.server", "10.1.2.3");
    }

    std::string reply()
    {
        serve(timeReferenceGet.bytes());
        return textOf(receiveTextReply());
    }
};

using UtcDateTimeTest = SystemTest;

} // namespace

TEST_F(UtcDateTimeTest, IsWrittenWithATAndWithoutAZone)
{
    clock.stopAt(sampleMoment);
    std::string text = "before";
    EXPECT_EQ(getUtcDateTime(text), 0);
    EXPECT_EQ(text, "2021-03-04T05:06:07");
}

TEST_F(UtcDateTimeTest, FailsIfTheTimeCannotBeRead)
{
    failNext("time", EOVERFLOW);
    std::string text = "before";
    EXPECT_EQ(getUtcDateTime(text), -1);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{
                  {LOG_WARNING, std::string("Getting current UTC time failed (time): ") + std::strerror(EOVERFLOW)}}));
}

TEST_F(UtcDateTimeTest, FailsIfTheTimeCannotBeConverted)
{
    failNext("gmtime", EOVERFLOW);
    std::string text = "before";
    EXPECT_EQ(getUtcDateTime(text), -1);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, std::string("Getting current UTC time failed (gmtime): ") +
                                                                std::strerror(EOVERFLOW)}}));
}

TEST_F(UtcDateTimeTest, FailsIfTheTimeCannotBeFormatted)
{
    failNext("strftime", ERANGE);
    std::string text = "before";
    EXPECT_EQ(getUtcDateTime(text), -1);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{
                               {LOG_WARNING, std::string("Formatting DateTime failed: ") + std::strerror(ERANGE)}}));
}

TEST_F(TimeReferenceGetTest, AnswersWithOneElementAndItsNul)
{
    sandbox.write("/etc/rc.d/S65ntpd", "");
    serve(timeReferenceGet.bytes());
    const std::string text = timeReference("Ntp", "10.1.2.3");
    EXPECT_EQ(hex(receiveTextReply()), hex(textMessage(replyTo(timeReferenceGet, 1), text)));
    EXPECT_TRUE(client.hasNothing());
    EXPECT_TRUE(isConnected());
}

TEST_F(TimeReferenceGetTest, SaysManualWithoutTheStartLinkEvenIfAServerIsConfigured)
{
    EXPECT_EQ(reply(), timeReference("Manual", "10.1.2.3"));
}

TEST_F(TimeReferenceGetTest, SaysNtpWithTheStartLink)
{
    sandbox.write("/etc/rc.d/S65ntpd", "");
    EXPECT_EQ(reply(), timeReference("Ntp", "10.1.2.3"));
}

TEST_F(TimeReferenceGetTest, SaysNotConfiguredForAnEmptyServer)
{
    uci.set("system.ntp.server", "");
    EXPECT_EQ(reply(), timeReference("Manual", "NOT CONFIGURED"));
}

TEST_F(TimeReferenceGetTest, CutsTheServerAt99Characters)
{
    uci.set("system.ntp.server", std::string(100, 'x'));
    EXPECT_EQ(reply(), timeReference("Manual", std::string(99, 'x')));
}

TEST_F(TimeReferenceGetTest, InsertsTheServerUnescaped)
{
    uci.set("system.ntp.server", "a\"<&");
    EXPECT_EQ(reply(), timeReference("Manual", "a\"<&"));
}

TEST_F(TimeReferenceGetTest, LogsNothing)
{
    reply();
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TimeReferenceGetTest, FailsIfTheServerCannotBeRead)
{
    uci.remove("system.ntp.server");
    serve(timeReferenceGet.bytes());
    expectStatus(timeReferenceGet, 2);
    EXPECT_TRUE(isConnected());
}

TEST_F(TimeReferenceGetTest, FailsIfTheTimeCannotBeRead)
{
    failNext("time", EOVERFLOW);
    serve(timeReferenceGet.bytes());
    expectStatus(timeReferenceGet, 2);
}

TEST_F(TimeReferenceGetTest, ReadsTheServerThenTheTimeThenTheMode)
{
    reply();
    EXPECT_EQ(orderOf({"system", "time", "access"}),
              (std::vector<std::string>{"system: uci -q get system.ntp.server > /tmp/uci.tmp",
                                        "time: ", "access: /etc/rc.d/S65ntpd 0"}));
}

TEST_F(TimeReferenceGetTest, LeavesAPayloadToBeTakenAsTheNextHeader)
{
    const SampleHeader payload = {.commandId = 0x55};
    serve(SampleHeader{.messageFormat = 1, .commandId = 16, .payloadLength = 20}.bytes() + payload.bytes());
    static_cast<void>(receiveTextReply());
    dispatch();
    expectStatus(payload, 6);
}
