// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <algorithm>
#include <string>
#include <vector>

[[nodiscard]] inline bool contains(const std::vector<std::string>& texts, const std::string& text)
{
    return std::ranges::find(texts, text) != texts.end();
}
