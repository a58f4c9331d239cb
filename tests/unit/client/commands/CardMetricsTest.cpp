// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/CardMetrics.h"

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace
{

CardMetrics answering()
{
    CardMetrics card{"card1", "10.0.0.11", Versions{{{"kernel", "KERN-6.1.0"}, {"pnr", "7"}}}, TimeReading(), 0.25, ""};
    card.reading->reference = {TimeMode::ntp, "10.0.0.1", 0};
    card.reading->skew = -1.5;
    card.reading->skewError = 0.75;
    return card;
}

CardMetrics silent()
{
    return {"card2", "10.0.0.12", std::nullopt, std::nullopt, 0, "timeout"};
}

// Without what explains them.
std::string samplesOf(const std::string& text)
{
    std::istringstream lines(text);
    std::string samples;
    for (std::string line; std::getline(lines, line);) {
        samples += line.starts_with('#') ? "" : line + "\n";
    }
    return samples;
}

TEST(CardMetricsTest, TellsAllOfACardThatAnswersAndOfOneThatIsDownThatAndWhy)
{
    EXPECT_EQ(samplesOf(metricsText({answering(), silent()}, {12.5, 1795399200.25})),
              "tarvel_up{card=\"card1\"} 1\n"
              "tarvel_up{card=\"card2\"} 0\n"
              "tarvel_failure_info{card=\"card2\",address=\"10.0.0.12\",category=\"timeout\"} 1\n"
              "tarvel_card_info{card=\"card1\",address=\"10.0.0.11\"} 1\n"
              "tarvel_component_info{card=\"card1\",component=\"kernel\",version=\"KERN-6.1.0\"} 1\n"
              "tarvel_component_info{card=\"card1\",component=\"pnr\",version=\"7\"} 1\n"
              "tarvel_clock_skew_seconds{card=\"card1\"} -1.5\n"
              "tarvel_clock_skew_error_seconds{card=\"card1\"} 0.75\n"
              "tarvel_time_reference_info{card=\"card1\",mode=\"Ntp\",server=\"10.0.0.1\"} 1\n"
              "tarvel_scrape_duration_seconds{card=\"card1\"} 0.25\n"
              "tarvel_poll_duration_seconds 12.5\n"
              "tarvel_poll_last_success_timestamp_seconds 1795399200.25\n");
}

TEST(CardMetricsTest, TellsACardUpThatRefusesItsTime)
{
    CardMetrics card = answering();
    card.reading = std::nullopt;
    card.failure = "refused-by-card";
    const std::string text = metricsText({card}, {});
    EXPECT_NE(text.find("tarvel_up{card=\"card1\"} 1\n"), std::string::npos);
    EXPECT_NE(text.find("category=\"refused-by-card\"} 1\n"), std::string::npos);
    EXPECT_EQ(text.find("skew"), std::string::npos);
}

TEST(CardMetricsTest, HasEachMetricInOnePiece)
{
    const std::string text = metricsText({answering(), silent()}, {});
    std::set<std::string> seen;
    std::string current;
    std::istringstream lines(samplesOf(text));
    for (std::string line; std::getline(lines, line);) {
        const std::string name = line.substr(0, line.find_first_of("{ "));
        EXPECT_TRUE(name == current || seen.insert(name).second) << line;
        EXPECT_NE(text.find(fmt::format("# HELP {} ", name)), std::string::npos);
        EXPECT_NE(text.find(fmt::format("# TYPE {} gauge\n", name)), std::string::npos);
        current = name;
    }
}

} // namespace
