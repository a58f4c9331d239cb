// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Key.h"

#include "sim/uci/UciError.h"

#include <gtest/gtest.h>

namespace
{

TEST(KeyTest, HasUpToThreeParts)
{
    const Key key = Key::parse("network.lan.ipaddr");
    EXPECT_EQ(key.config, "network");
    EXPECT_EQ(key.section, "lan");
    EXPECT_EQ(key.option, "ipaddr");
}

TEST(KeyTest, TheValueIsWhatFollowsTheFirstEqualSign)
{
    EXPECT_EQ(Key::parse("a.b.c=d=e.f").value, "d=e.f");
}

TEST(KeyTest, WithoutEqualSignThereIsNoValue)
{
    EXPECT_FALSE(Key::parse("a.b.c").value.has_value());
}

TEST(KeyTest, AnEmptyValueIsAValue)
{
    EXPECT_EQ(Key::parse("a.b.c=").value, "");
}

TEST(KeyTest, ASectionMayBeAddressedByTypeAndIndex)
{
    EXPECT_EQ(Key::parse("system.@system[0].hostname").section, "@system[0]");
}

class InvalidKeyTest : public testing::TestWithParam<const char*>
{
};

TEST_P(InvalidKeyTest, IsRefused)
{
    EXPECT_THROW(Key::parse(GetParam()), UciError);
}

INSTANTIATE_TEST_SUITE_P(Key, InvalidKeyTest,
                         testing::Values("", ".", "a.", "a..c", "a.b.", "a.b.c.d", "a/b", "a.b.c-d", "=v",
                                         "a.b.c=\x01"));

} // namespace
