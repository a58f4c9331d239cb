// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/TimePlan.h"

#include "client/model/Failure.h"
#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

TimeReference cardWith(const std::string& server)
{
    return {TimeMode::manual, server, 0, false};
}

Category categoryOf(const TimeReference& now, bool unsafe = false)
{
    return failureOf([&] { (void)planTime(now, {TimeMode::manual, "", 1000}, unsafe); }).category;
}

bool isRefused(const TimeOptions& options, bool unsafe = false)
{
    return failureOf([&] { checkTimeOptions(options, unsafe); }).code == ExitCode::usage;
}

TEST(TimePlanTest, SendsTheWantedServerInNtpMode)
{
    const TimeRequest expected{TimeMode::ntp, "10.0.0.9", 1000};
    EXPECT_EQ(planTime(cardWith("10.0.0.1"), {TimeMode::ntp, "10.0.0.9", 1000}, false), expected);
}

TEST(TimePlanTest, SendsTheCardsServerBackWithAManualTime)
{
    const TimeRequest expected{TimeMode::manual, "10.0.0.1", 1000};
    EXPECT_EQ(planTime(cardWith("10.0.0.1"), {TimeMode::manual, "", 1000}, false), expected);
}

TEST(TimePlanTest, SendsAnEmptyServerBackIfNoneIsConfigured)
{
    EXPECT_EQ(planTime(cardWith("NOT CONFIGURED"), {TimeMode::manual, "", 1000}, false).server, "");
}

TEST(TimePlanTest, RefusesAnEmptyServerThatWouldDeleteTheSetting)
{
    EXPECT_EQ(categoryOf(cardWith("")), Category::cannotKeepServer);
}

TEST(TimePlanTest, SendsAListOfServersBackAsItCame)
{
    const std::string list = "0.pool.ntp.org 1.pool.ntp.org  a-b_c:d ";
    EXPECT_EQ(planTime(cardWith(list), {TimeMode::manual, "", 1000}, false).server, list);
}

TEST(TimePlanTest, RefusesOtherBlanksThanThoseOfAList)
{
    EXPECT_EQ(categoryOf(cardWith("10.0.0.1\t10.0.0.2")), Category::usage);
}

TEST(TimePlanTest, NamesTheServersOfAListThatGo)
{
    const TimeRequest request{TimeMode::ntp, "b", 0};
    EXPECT_EQ(serversThatGo(cardWith("a b  c"), request), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(serversThatGo(cardWith("NOT CONFIGURED"), request), std::vector<std::string>());
}

TEST(TimePlanTest, RefusesAServerOf99CharactersThatMayHaveBeenCut)
{
    EXPECT_EQ(categoryOf(cardWith(std::string(99, 'a'))), Category::cannotKeepServer);
    EXPECT_EQ(categoryOf(cardWith(std::string(98, 'a'))), Category::none);
}

TEST(TimePlanTest, RefusesToSendBackWhatAShellWouldInterpret)
{
    EXPECT_EQ(categoryOf(cardWith("a;reboot")), Category::usage);
    EXPECT_EQ(categoryOf(cardWith("a;reboot"), true), Category::none);
}

TEST(TimeOptionsTest, RefusesAnEmptyServer)
{
    EXPECT_TRUE(isRefused({TimeMode::ntp, "", 1000}));
}

TEST(TimeOptionsTest, RefusesTheWordsForNoServer)
{
    EXPECT_TRUE(isRefused({TimeMode::ntp, "NOT CONFIGURED", 1000}));
}

TEST(TimeOptionsTest, RefusesAServerThatAShellWouldInterpret)
{
    for (const char* server : {"a;b", "$(reboot)", "`id`", "a b", "a'b", "a&b", "a|b", "a>b", "a*", "#a"}) {
        EXPECT_TRUE(isRefused({TimeMode::ntp, server, 1000})) << server;
    }
    EXPECT_FALSE(isRefused({TimeMode::ntp, "a;b", 1000}, true));
}

TEST(TimeOptionsTest, RefusesAServerThatLooksLikeAnOption)
{
    EXPECT_TRUE(isRefused({TimeMode::ntp, "--server", 1000}));
    EXPECT_TRUE(isRefused({TimeMode::ntp, "-4", 1000}, true));
}

TEST(TimeOptionsTest, RefusesATooLongServer)
{
    EXPECT_TRUE(isRefused({TimeMode::ntp, std::string(99, 'a'), 1000}));
    EXPECT_FALSE(isRefused({TimeMode::ntp, std::string(98, 'a'), 1000}));
}

TEST(TimeOptionsTest, RefusesTimesBeyondThe32BitClock)
{
    EXPECT_FALSE(isRefused({TimeMode::manual, "", 2147483647}));
    EXPECT_TRUE(isRefused({TimeMode::manual, "", 2147483648}));
    EXPECT_TRUE(isRefused({TimeMode::manual, "", -1}));
}

} // namespace
