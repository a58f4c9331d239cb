// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/CardState.h"

#include <gtest/gtest.h>
#include <set>

namespace
{

constexpr CardState all[] = {CardState::upAndIdle,   CardState::up,         CardState::busy,
                             CardState::strange,     CardState::daemonDown, CardState::noConnection,
                             CardState::unreachable, CardState::noAddress,  CardState::notFound};

TEST(CardStateTest, HasWordsOfItsOwnForEach)
{
    std::set<std::string_view> words;
    for (const CardState state : all) {
        words.insert(wordsOf(state));
    }
    EXPECT_EQ(words.size(), std::size(all));
    EXPECT_FALSE(words.contains(""));
}

TEST(CardStateTest, IsDownWhereNothingTakesConnections)
{
    EXPECT_TRUE(isDown(CardState::daemonDown));
    EXPECT_TRUE(isDown(CardState::noConnection));
    EXPECT_TRUE(isDown(CardState::unreachable));
    EXPECT_TRUE(isDown(CardState::notFound));
    EXPECT_FALSE(isDown(CardState::noAddress)); // it hears
    EXPECT_FALSE(isDown(CardState::up));
    EXPECT_FALSE(isDown(CardState::busy));
    EXPECT_FALSE(isDown(CardState::strange));
    EXPECT_FALSE(isDown(CardState::upAndIdle));
}

TEST(CardStateTest, FollowsFromHowAQuestionFailed)
{
    EXPECT_EQ(stateOf(Failure{ExitCode::unreachable, Category::refused, "", ""}), CardState::daemonDown);
    EXPECT_EQ(stateOf(Failure{ExitCode::unreachable, Category::connectTimeout, "", ""}), CardState::noConnection);
    EXPECT_EQ(stateOf(Failure{ExitCode::unreachable, Category::noRoute, "", ""}), CardState::unreachable);
    EXPECT_EQ(stateOf(Failure{ExitCode::unreachable, Category::noAddress, "", ""}), CardState::noAddress);
    EXPECT_EQ(stateOf(Failure{ExitCode::noAnswer, Category::timeout, "", ""}), CardState::busy);
    EXPECT_EQ(stateOf(Failure{ExitCode::protocol, Category::garbage, "", ""}), CardState::strange);
}

TEST(CardStateTest, FollowsFromItsPort)
{
    EXPECT_EQ(stateOf(PortState::open), CardState::up);
    EXPECT_EQ(stateOf(PortState::closed), CardState::daemonDown);
    EXPECT_EQ(stateOf(PortState::silent), CardState::noConnection);
}

} // namespace
