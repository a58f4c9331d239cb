// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/TimeReference.h"

#include "client/model/Failure.h"

#include <gtest/gtest.h>

namespace
{

TimeReference timeReferenceOf(const std::string& text)
{
    return parseTimeReference(text);
}

std::string element(const std::string& server, const std::string& time = "2021-03-04T05:06:07")
{
    return R"(<TimeReferenceConfiguration Mode="Manual" NtpServer=")" + server + R"(" DateTime=")" + time + R"("/>)";
}

TEST(TimeReferenceTextTest, GivesModeServerAndTime)
{
    const TimeReference reference = timeReferenceOf(element("NOT CONFIGURED"));
    EXPECT_EQ(reference.mode, TimeMode::manual);
    EXPECT_EQ(reference.server, "NOT CONFIGURED");
    EXPECT_EQ(reference.time, 1614834367);
    EXPECT_FALSE(reference.malformed);
}

TEST(TimeReferenceTextTest, IsReadByItsFormIfItIsNoXml)
{
    const TimeReference reference = timeReferenceOf(element("a<b\"c & d"));
    EXPECT_EQ(reference.server, "a<b\"c & d");
    EXPECT_TRUE(reference.malformed);
}

TEST(TimeReferenceTextTest, KeepsATabThatXmlWouldReplace)
{
    const TimeReference reference = timeReferenceOf(element("a\tb"));
    EXPECT_EQ(reference.server, "a\tb");
    EXPECT_FALSE(reference.malformed);
}

TEST(TimeReferenceTextTest, HasNoOtherForm)
{
    for (const std::string& text :
         {std::string(), std::string("<TimeReferenceConfiguration/>"), element("a", "yesterday"), element("a") + "x",
          std::string(R"(<TimeReferenceConfiguration Mode="NTP" NtpServer="a" DateTime="2021-03-04T05:06:07"/>)")}) {
        EXPECT_THROW((void)timeReferenceOf(text), Failure) << text;
    }
}

TEST(TimeReferenceRequestTest, HasTheThreeAttributesInOrder)
{
    EXPECT_EQ(timeReferenceSetXml({TimeMode::ntp, "10.0.0.9", 1614834367}),
              R"(<TimeReferenceConfiguration Mode="Ntp" NtpServer="10.0.0.9" DateTime="2021-03-04T05:06:07"/>)");
}

TEST(TimeTest, IsUtcWithoutAZone)
{
    EXPECT_EQ(parseTime("1970-01-02T00:00:01"), 86401);
    EXPECT_EQ(parseTime("1970-01-02T00:00:01Z"), 86401);
}

TEST(TimeTest, FollowsItsZone)
{
    EXPECT_EQ(parseTime("1970-01-02T01:00:01+01:00"), 86401);
    EXPECT_EQ(parseTime("1970-01-01T23:30:01-00:30"), 86401);
}

TEST(TimeTest, IsNoneIfADigitIsWrong)
{
    for (const char* text : {"", "2021-02-30T00:00:00", "2021-13-01T00:00:00", "2021-03-04 05:06:07", "2021-3-4T5:6:7",
                             "2021-03-04T24:00:00", "2021-03-04T05:60:07", "2021-03-04T05:06:60",
                             "2021-03-04T05:06:07x", "2021-03-04T05:06:07+1", "2021-03-04", "+021-03-04T05:06:07"}) {
        EXPECT_FALSE(parseTime(text)) << text;
    }
}

TEST(TimeTest, IsRefusedForWhatIsWrongWithIt)
{
    EXPECT_EQ(flawOfTime("2021-02-30T00:00:00Z"), "has a date that does not exist");
    EXPECT_EQ(flawOfTime("2021-03-04T00:00:00 CET"), "has a zone that cannot be read: it is Z, or such as +01:00");
    EXPECT_EQ(flawOfTime("2021-03-04T00:00:00+1"), "has a zone that cannot be read: it is Z, or such as +01:00");
    EXPECT_EQ(flawOfTime("noon"), "is no time such as 2026-03-04T05:06:07Z");
    EXPECT_EQ(flawOfTime("2021-03-04T00:00:00+01:00"), "");
}

TEST(TimeTest, IsFormattedAsItIsParsed)
{
    for (const std::int64_t time : {std::int64_t{0}, std::int64_t{951782399}, std::int64_t{2147483647}}) {
        EXPECT_EQ(parseTime(formatTime(time)), time);
    }
}

} // namespace
