// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Census.h"

#include <gtest/gtest.h>

namespace
{

TEST(CensusTest, CountsWhatAnAddressAnsweredOnOneInterface)
{
    Census census;
    census.note({{}, "10.0.0.11", cardPort, "lan0"});
    census.note({{}, "10.0.0.12", cardPort, "lan0"});
    census.note({{}, "10.0.0.12", cardPort, "lan0"});
    EXPECT_EQ(census.answersFrom("10.0.0.11"), 1);
    EXPECT_EQ(census.answersFrom("10.0.0.12"), 2);
    EXPECT_EQ(census.answersFrom("10.0.0.13"), 0);
}

TEST(CensusTest, TakesACardThatTwoInterfacesHearForOne)
{
    Census census;
    census.note({{}, "10.0.0.11", cardPort, "lan0"});
    census.note({{}, "10.0.0.11", cardPort, "lan1"});
    EXPECT_EQ(census.answersFrom("10.0.0.11"), 1);
}

} // namespace
