// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Base64.h"

#include <gtest/gtest.h>
#include <string_view>

namespace
{

std::string base64Of(std::string_view text)
{
    return inBase64(std::as_bytes(std::span(text)));
}

TEST(Base64Test, IsThatOfTheStandardsExamples)
{
    EXPECT_EQ(base64Of(""), "");
    EXPECT_EQ(base64Of("f"), "Zg==");
    EXPECT_EQ(base64Of("fo"), "Zm8=");
    EXPECT_EQ(base64Of("foo"), "Zm9v");
    EXPECT_EQ(base64Of("foob"), "Zm9vYg==");
    EXPECT_EQ(base64Of("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64Of("foobar"), "Zm9vYmFy");
}

TEST(Base64Test, HasTheLastLettersOfItsAlphabetForHighBits)
{
    EXPECT_EQ(base64Of("\xff\xff\xfe\xfb\xef\xbe"), "///+++++");
}

} // namespace
