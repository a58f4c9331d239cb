// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/CapturedOutput.h"

#include <gtest/gtest.h>
#include <iostream>
#include <unistd.h>

TEST(CapturedOutputTest, CatchesEveryWayOfWriting)
{
    CapturedOutput output;
    std::cout << "stream ";
    std::fputs("stdio ", stdout);
    EXPECT_EQ(output.out(), "stream stdio ");
}

TEST(CapturedOutputTest, KeepsErrorsApart)
{
    CapturedOutput output;
    std::cerr << "error";
    EXPECT_EQ(output.err(), "error");
    EXPECT_EQ(output.out(), "");
}
