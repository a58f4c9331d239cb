// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Category.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace
{

TEST(CategoryTest, HasAWordOfItsOwnForEach)
{
    std::set<std::string> words;
    for (int number = 0; number <= static_cast<int>(Category::wrongVersion); ++number) {
        words.emplace(wordOf(static_cast<Category>(number)));
    }
    EXPECT_EQ(words.size(), static_cast<std::size_t>(Category::wrongVersion) + 1);
}

TEST(CategoryTest, IsSilentWhenAllIsWell)
{
    EXPECT_EQ(wordOf(Category::none), "");
}

} // namespace
