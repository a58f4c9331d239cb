// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/NtpServerRule.h"

#include <gtest/gtest.h>
#include <string>

TEST(NtpServerRuleTest, AddressesAndNamesOfHostsPass)
{
    for (const char* host : {"10.0.0.1", "fe80::1", "0.openwrt.pool.ntp.org", "TIME_2", "a-b-", "x"}) {
        EXPECT_TRUE(isPlainHost(host)) << host;
    }
}

TEST(NtpServerRuleTest, NothingIsNoHost)
{
    EXPECT_FALSE(isPlainHost(""));
}

TEST(NtpServerRuleTest, AHyphenInFrontIsAnOption)
{
    EXPECT_FALSE(isPlainHost("-x"));
}

TEST(NtpServerRuleTest, OnlyThePlainCharactersOfAllPass)
{
    std::string passed;
    for (int code = 0; code < 256; ++code) {
        const std::string text = {'a', static_cast<char>(code)};
        passed += isPlainHost(text) ? text.substr(1) : "";
    }
    EXPECT_EQ(passed, "-.0123456789:ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
}
