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

TEST(Ipv4Test, HasAMaskForEachLengthOfAnAddress)
{
    EXPECT_EQ(maskOfPrefix(0), 0U);
    EXPECT_EQ(maskOfPrefix(24), 0xFFFFFF00U);
    EXPECT_EQ(maskOfPrefix(32), 0xFFFFFFFFU);
    EXPECT_EQ(maskOfPrefix(33), std::nullopt);
    EXPECT_EQ(maskOfPrefix(-1), std::nullopt);
}

} // namespace
