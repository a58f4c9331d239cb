// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Printable.h"

#include "client/output/Console.h"

#include <gtest/gtest.h>

namespace
{

TEST(Printable, ShowsControlCharactersAsNumbers)
{
    EXPECT_EQ(printable("\x1b[31mred\n"), "\\x1b[31mred\\x0a");
}

TEST(Printable, LeavesTheEndsOfLinesInATextOfSeveral)
{
    EXPECT_EQ(printableLines("a\x1b\nb\n\rc"), "a\\x1b\nb\n\\x0dc");
}

TEST(Console, LetsNoControlCharacterThrough)
{
    testing::internal::CaptureStderr();
    Console(false, false).note("card1: \x1b[2J");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "card1: \\x1b[2J\n");
}

} // namespace
