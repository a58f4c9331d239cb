// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>
#include <vector>

// "card[01-03,7]x" -> card01x card02x card03x card7x; text without brackets is itself. Several brackets multiply.
// A backslash before [ ] , or another one takes that letter as it is, here and in a list.
// Throws a usage Failure for brackets that do not match, a range that runs backwards, or more than 4096 names.
[[nodiscard]] std::vector<std::string> expandRanges(std::string_view text);

// "card1,card[2,3]" -> card1 and card[2,3]: splits at the commas outside of brackets.
[[nodiscard]] std::vector<std::string> splitList(std::string_view text);

// The other way round: names with a common beginning and consecutive numbers of one width are put together,
// the rest is listed, separated by commas.
[[nodiscard]] std::string foldRanges(const std::vector<std::string>& names);
