// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Ipv4.h"

#include <gtest/gtest.h>

namespace
{

TEST(Ipv4Test, ReadsAPrefixLengthThatIsANumberAndNothingElse)
{
    EXPECT_EQ(prefixLengthIn("24"), 24);
    EXPECT_EQ(prefixLengthIn("33"), 33); // which has no mask
    for (const char* const text : {"", "24 ", " 24", "0x18", "24x", "99999999999"}) {
        EXPECT_EQ(prefixLengthIn(text), std::nullopt) << text;
    }
}

TEST(Ipv4Test, IsFourDecimalNumbersWithDotsAndNothingElse)
{
    EXPECT_EQ(parseIpv4("10.0.0.255"), 0x0A0000FFU);
    EXPECT_EQ(parseIpv4("0.0.0.0"), 0U);
    for (const char* const text : {"", "10", "10.0.0", "10.0.0.256", "10.0.0.0x1", "10.0.0.1 ", "10.0.0.1/8"}) {
        EXPECT_EQ(parseIpv4(text), std::nullopt) << text;
    }
    EXPECT_EQ(formatIpv4(0x0A0000FFU), "10.0.0.255");
}

TEST(Ipv4Test, KnowsAMaskByItsOnesBeforeItsZeros)
{
    for (const Ipv4 mask : {0U, 0x80000000U, 0xFFFFFF00U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(isMask(mask)) << mask;
    }
    for (const Ipv4 none : {1U, 0x7FFFFFFFU, 0xFF00FF00U, 0xFFFFFF01U}) {
        EXPECT_FALSE(isMask(none)) << none;
    }
}

TEST(Ipv4Test, IsOfAHostBetweenItsOwnNetworksAndMulticast)
{
    for (const char* const host : {"1.0.0.0", "10.0.0.11", "126.255.255.255", "128.0.0.0", "223.255.255.255"}) {
        EXPECT_TRUE(isHostAddress(parseIpv4(host).value())) << host;
    }
    for (const char* const none : {"0.255.255.255", "127.0.0.1", "224.0.0.0", "255.255.255.255"}) {
        EXPECT_FALSE(isHostAddress(parseIpv4(none).value())) << none;
    }
}

TEST(Ipv4Test, HasAMaskForEachLengthOfAnAddress)
{
    EXPECT_EQ(maskOfPrefix(0), 0U);
    EXPECT_EQ(maskOfPrefix(24), 0xFFFFFF00U);
    EXPECT_EQ(maskOfPrefix(32), 0xFFFFFFFFU);
    EXPECT_EQ(maskOfPrefix(33), std::nullopt);
    EXPECT_EQ(maskOfPrefix(-1), std::nullopt);
}

} // namespace
