// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/TextList.h"

#include <gtest/gtest.h>
#include <vector>

namespace
{

TEST(TextListTest, GivesEachTextByItsNumber)
{
    const std::vector<std::string> texts = {"../lib/a", "../lib/ab", "", "../lib/a", "x", std::string("\0y", 2)};
    TextList list;
    std::vector<std::uint32_t> numbers;
    for (int round = 0; round < 50; ++round) {
        for (const std::string& text : texts) {
            numbers.push_back(list.add(text + std::to_string(round)));
        }
    }
    for (std::size_t index = numbers.size(); index > 0; --index) {
        EXPECT_EQ(list.at(numbers[index - 1]),
                  texts[(index - 1) % texts.size()] + std::to_string((index - 1) / texts.size()));
    }
}

} // namespace
