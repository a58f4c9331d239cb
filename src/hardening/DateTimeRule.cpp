// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/DateTimeRule.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::string_view digits = "0123456789";
constexpr std::size_t mostDigits = 9; // more do not fit an int for certain

// Takes the first number off the text and returns its digits, without zeros in front.
std::string_view takeNumber(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_of("123456789"), text.size()));
    const std::string_view number = text.substr(0, text.find_first_not_of(digits));
    text.remove_prefix(number.size());
    return number;
}

bool hasLongNumber(std::string_view text)
{
    while (!text.empty()) {
        if (takeNumber(text).size() > mostDigits) {
            return true;
        }
    }
    return false;
}

} // namespace

bool fitsClock(std::string_view text, std::int64_t seconds)
{
    return std::in_range<std::int32_t>(seconds) && !hasLongNumber(text);
}
