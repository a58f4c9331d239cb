// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/BoundedText.h"

#include <array>

#include <gtest/gtest.h>

TEST(BoundedTextTest, ATextThatFitsIsCopiedWhole)
{
    std::array<char, 7> buffer;
    EXPECT_EQ(copyText(buffer, "Manual"), 6U);
    EXPECT_STREQ(buffer.data(), "Manual");
}

TEST(BoundedTextTest, ATextThatIsTooLongIsCutBeforeTheTerminatingNul)
{
    std::array<char, 4> buffer;
    EXPECT_EQ(copyText(buffer, "Manual"), 3U);
    EXPECT_STREQ(buffer.data(), "Man");
}

TEST(BoundedTextTest, NothingIsWrittenBehindTheBuffer)
{
    std::array<char, 5> memory = {'1', '2', '3', '4', '5'};
    copyText(std::span(memory).first(4), "Manual");
    EXPECT_EQ(memory[4], '5');
}

TEST(BoundedTextTest, AnEmptyTextLeavesOnlyTheNul)
{
    std::array<char, 3> buffer = {'a', 'b', 'c'};
    EXPECT_EQ(copyText(buffer, ""), 0U);
    EXPECT_STREQ(buffer.data(), "");
}

TEST(BoundedTextTest, ABufferOfOneByteHoldsTheEmptyText)
{
    std::array<char, 1> buffer = {'a'};
    EXPECT_EQ(copyText(buffer, "Ntp"), 0U);
    EXPECT_EQ(buffer[0], '\0');
}
