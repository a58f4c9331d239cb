// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Endpoint.h"

#include <gtest/gtest.h>

namespace
{

TEST(EndpointTest, IsTheSameHoweverItIsReached)
{
    EXPECT_EQ((Endpoint{"10.0.0.11", cardPort, "lan0"}), (Endpoint{"10.0.0.11", cardPort, "lan1"}));
    EXPECT_EQ((Endpoint{"10.0.0.11", cardPort, "lan0"}), Endpoint{"10.0.0.11"});
    EXPECT_FALSE((Endpoint{"10.0.0.11", 6000, "lan0"}) == (Endpoint{"10.0.0.11", cardPort, "lan0"}));
    EXPECT_FALSE(Endpoint{"10.0.0.11"} == Endpoint{"10.0.0.12"});
}

} // namespace
