// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Gauge.h"

#include <gtest/gtest.h>

namespace
{

std::string sampleOf(const Labels& labels, double value)
{
    Gauge gauge("tarvel_up", "Whether it is up.");
    gauge.add(labels, value);
    const std::string text = gauge.text();
    return text.substr(text.find("gauge\n") + 6);
}

TEST(GaugeTest, TellsWhatItIsOnceAndThenItsSamplesInOrder)
{
    Gauge gauge("tarvel_up", "Whether it is up.");
    gauge.add({{"card", "card2"}}, 0);
    gauge.add({{"card", "card1"}}, 1);
    EXPECT_EQ(gauge.text(), "# HELP tarvel_up Whether it is up.\n"
                            "# TYPE tarvel_up gauge\n"
                            "tarvel_up{card=\"card2\"} 0\n"
                            "tarvel_up{card=\"card1\"} 1\n");
}

TEST(GaugeTest, IsNotMentionedWithoutASample)
{
    EXPECT_EQ(Gauge("tarvel_up", "Whether it is up.").text(), "");
}

TEST(GaugeTest, HasNoBracesWithoutLabels)
{
    EXPECT_EQ(sampleOf({}, 1), "tarvel_up 1\n");
}

TEST(GaugeTest, EscapesWhatMeansSomethingBetweenQuotes)
{
    EXPECT_EQ(sampleOf({{"a", "say \"no\" to \\"}, {"b", "{},="}}, 1),
              "tarvel_up{a=\"say \\\"no\\\" to \\\\\",b=\"{},=\"} 1\n");
}

TEST(GaugeTest, LetsNoTextEndItsLine)
{
    const std::string text = sampleOf({{"a", "1\n# EOF\r\ntarvel_up 0"}}, 1);
    EXPECT_EQ(text.find('\n'), text.size() - 1);
    EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST(GaugeTest, HasNothingButUtf8)
{
    EXPECT_EQ(sampleOf({{"a", "K\xc3\xa4se\xff"}}, 1), "tarvel_up{a=\"K\xc3\xa4se\\\\xff\"} 1\n");
}

TEST(GaugeTest, HasEachSetOfLabelsOnce)
{
    Gauge gauge("tarvel_up", "Whether it is up.");
    gauge.add({{"card", "card1"}}, 1);
    gauge.add({{"card", "card1"}}, 0);
    gauge.add({{"card", "card1"}, {"version", "2"}}, 1);
    EXPECT_TRUE(gauge.text().ends_with("gauge\ntarvel_up{card=\"card1\"} 1\n"
                                       "tarvel_up{card=\"card1\",version=\"2\"} 1\n"));
}

TEST(GaugeTest, TellsNumbersToMicroseconds)
{
    EXPECT_EQ(sampleOf({}, -0.1234567), "tarvel_up -0.123457\n");
    EXPECT_EQ(sampleOf({}, 1795399200.25), "tarvel_up 1795399200.25\n");
    EXPECT_EQ(sampleOf({}, -2147483648), "tarvel_up -2147483648\n");
}

} // namespace
