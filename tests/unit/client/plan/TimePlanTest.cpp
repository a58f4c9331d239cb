// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/TimePlan.h"

#include "client/model/Failure.h"

#include <gtest/gtest.h>

namespace
{

TimeReference cardWith(const std::string& server)
{
    return {"Manual", server, 0, false};
}

std::string categoryOf(const TimeReference& now, bool unsafe = false)
{
    try {
        (void)planTime(now, {true, "", 1000}, unsafe);
    } catch (const Failure& failure) {
        return failure.category;
    }
    return "planned";
}

bool isRefused(const TimeWish& wish, bool unsafe = false)
{
    try {
        checkTimeWish(wish, unsafe);
    } catch (const Failure& failure) {
        return failure.code == ExitCode::usage;
    }
    return false;
}

TEST(TimePlan, SendsTheWantedServerInNtpMode)
{
    const TimeRequest expected{"Ntp", "10.0.0.9", 1000};
    EXPECT_EQ(planTime(cardWith("10.0.0.1"), {false, "10.0.0.9", 1000}, false), expected);
}

TEST(TimePlan, SendsTheCardsServerBackWithAManualTime)
{
    const TimeRequest expected{"Manual", "10.0.0.1", 1000};
    EXPECT_EQ(planTime(cardWith("10.0.0.1"), {true, "", 1000}, false), expected);
}

TEST(TimePlan, SendsAnEmptyServerBackIfNoneIsConfigured)
{
    EXPECT_EQ(planTime(cardWith("NOT CONFIGURED"), {true, "", 1000}, false).server, "");
}

TEST(TimePlan, RefusesAnEmptyServerThatWouldDeleteTheSetting)
{
    EXPECT_EQ(categoryOf(cardWith("")), "cannot-keep-server");
}

TEST(TimePlan, RefusesAServerWithBlanksThatCannotBeSentBack)
{
    EXPECT_EQ(categoryOf(cardWith("10.0.0.1 10.0.0.2")), "cannot-keep-server");
}

TEST(TimePlan, RefusesAServerOf99CharactersThatMayHaveBeenCut)
{
    EXPECT_EQ(categoryOf(cardWith(std::string(99, 'a'))), "cannot-keep-server");
    EXPECT_EQ(categoryOf(cardWith(std::string(98, 'a'))), "planned");
}

TEST(TimePlan, RefusesToSendBackWhatAShellWouldInterpret)
{
    EXPECT_EQ(categoryOf(cardWith("a;reboot")), "usage");
    EXPECT_EQ(categoryOf(cardWith("a;reboot"), true), "planned");
}

TEST(TimeWish, RefusesAnEmptyServer)
{
    EXPECT_TRUE(isRefused({false, "", 1000}));
}

TEST(TimeWish, RefusesTheWordsForNoServer)
{
    EXPECT_TRUE(isRefused({false, "NOT CONFIGURED", 1000}));
}

TEST(TimeWish, RefusesAServerThatAShellWouldInterpret)
{
    for (const char* server : {"a;b", "$(reboot)", "`id`", "a b", "a'b", "a&b", "a|b", "a>b", "a*", "#a"}) {
        EXPECT_TRUE(isRefused({false, server, 1000})) << server;
    }
    EXPECT_FALSE(isRefused({false, "a;b", 1000}, true));
}

TEST(TimeWish, RefusesATooLongServer)
{
    EXPECT_TRUE(isRefused({false, std::string(99, 'a'), 1000}));
    EXPECT_FALSE(isRefused({false, std::string(98, 'a'), 1000}));
}

TEST(TimeWish, RefusesTimesBeyondThe32BitClock)
{
    EXPECT_FALSE(isRefused({true, "", 2147483647}));
    EXPECT_TRUE(isRefused({true, "", 2147483648}));
    EXPECT_TRUE(isRefused({true, "", -1}));
}

} // namespace
