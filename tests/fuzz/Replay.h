// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

inline std::vector<std::uint8_t> contentOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Every file of a folder of the corpus, and beginnings of it: every seventh one if they are not too many, and never
// much more than `cuts`.
template<typename Card, typename Feed>
void replay(const std::string& folder, Feed feed, std::size_t cuts = 16)
{
    Card card;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CORPUS_DIRECTORY "/" + folder)) {
        const std::vector<std::uint8_t> content = contentOf(entry.path());
        EXPECT_EQ(feed(card, std::span(content)), "") << entry.path();
        const std::size_t step = std::max<std::size_t>(7, content.size() / cuts);
        for (std::size_t length = 0; length < content.size(); length += step) {
            EXPECT_EQ(feed(card, std::span(content).first(length)), "") << entry.path() << ", cut at " << length;
        }
        ++files;
    }
    EXPECT_GT(files, 0U);
}
