// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Ranges.h"

#include "client/model/Failure.h"

#include <algorithm>
#include <charconv>
#include <fmt/core.h>
#include <optional>

namespace
{

constexpr std::size_t mostNames = 4096; // chosen: more is rather a slip than a wish

Failure badRange(std::string_view text, std::string_view why)
{
    return usageFailure(fmt::format("\"{}\" is not a range of names: {}", text, why));
}

std::optional<unsigned> numberOf(std::string_view digits)
{
    unsigned number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    return number;
}

// "01-16" or "7"; the first number's width is that of all.
void appendInterval(std::vector<std::string>& items, std::string_view interval, std::string_view whole)
{
    const std::size_t dash = interval.find('-');
    const std::string_view first = interval.substr(0, dash);
    const std::string_view last = dash == std::string_view::npos ? first : interval.substr(dash + 1);
    const std::optional<unsigned> from = numberOf(first);
    const std::optional<unsigned> to = numberOf(last);
    if (!from || !to) {
        throw badRange(whole, "brackets hold numbers, such as [01-16] or [1,3,7-9]");
    }
    if (*from > *to || *to - *from >= mostNames) {
        throw badRange(whole, "the numbers run backwards or too far");
    }
    for (unsigned number = *from; number <= *to; ++number) {
        items.push_back(fmt::format("{:0{}}", number, first.size()));
    }
}

std::vector<std::string> bracketItems(std::string_view inside, std::string_view whole)
{
    std::vector<std::string> items;
    for (std::size_t comma = inside.find(','); comma != std::string_view::npos; comma = inside.find(',')) {
        appendInterval(items, inside.substr(0, comma), whole);
        inside.remove_prefix(comma + 1);
    }
    appendInterval(items, inside, whole);
    return items;
}

constexpr std::string_view escapable = "[],\\";

bool isEscape(std::string_view text, std::size_t at)
{
    return text[at] == '\\' && at + 1 < text.size() && escapable.find(text[at + 1]) != std::string_view::npos;
}

// The first letter of that kind that stands behind no backslash; npos if there is none.
std::size_t findUnescaped(std::string_view text, char letter, std::size_t from = 0)
{
    for (std::size_t at = from; at < text.size(); ++at) {
        if (isEscape(text, at)) {
            ++at;
        } else if (text[at] == letter) {
            return at;
        }
    }
    return std::string_view::npos;
}

std::string unescaped(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        at += isEscape(text, at) ? 1 : 0;
        plain += text[at];
    }
    return plain;
}

struct Numbered {
    std::string_view stem;
    std::string_view digits;
    unsigned number = 0;
};

std::optional<Numbered> splitNumber(std::string_view name)
{
    const std::size_t stemEnd = name.find_last_not_of("0123456789") + 1; // npos + 1 is 0: all digits
    const std::string_view digits = name.substr(stemEnd);
    const std::optional<unsigned> number = numberOf(digits);
    if (!number || stemEnd == 0 || name[stemEnd - 1] == '.') { // an address is not a numbered name
        return std::nullopt;
    }
    return Numbered{name.substr(0, stemEnd), digits, *number};
}

bool follows(const Numbered& next, const Numbered& last)
{
    // card10 follows card9 and card09; card010 follows none, or it could not be told from card10 in brackets.
    const bool samePadding =
        next.digits.size() == last.digits.size() || (last.digits.front() != '0' && next.digits.front() != '0');
    return next.stem == last.stem && samePadding && next.number == last.number + 1;
}

std::string describeRun(const Numbered& first, const Numbered& last)
{
    if (first.number == last.number) {
        return fmt::format("{}{}", first.stem, first.digits);
    }
    return fmt::format("{}[{}-{}]", first.stem, first.digits, last.digits);
}

} // namespace

std::vector<std::string> expandRanges(std::string_view text)
{
    const std::size_t open = findUnescaped(text, '[');
    if (findUnescaped(text, ']') < open) {
        throw badRange(text, "a ] without a [");
    }
    if (open == std::string_view::npos) {
        return {unescaped(text)};
    }
    const std::size_t close = text.find(']', open);
    if (close == std::string_view::npos) {
        throw badRange(text, "a [ without a ]");
    }
    const std::vector<std::string> endings = expandRanges(text.substr(close + 1));
    std::vector<std::string> names;
    for (const std::string& item : bracketItems(text.substr(open + 1, close - open - 1), text)) {
        for (const std::string& ending : endings) {
            names.push_back(fmt::format("{}{}{}", unescaped(text.substr(0, open)), item, ending));
        }
        // Looked at in between: brackets multiply, and all of them might not fit into memory.
        if (names.size() > mostNames) {
            throw badRange(text, "too many names");
        }
    }
    return names;
}

std::vector<std::string> splitList(std::string_view text)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isEscape(text, at)) {
            ++at;
        } else if (text[at] == '[') {
            at = std::min(text.find(']', at), text.size()); // a bracket that stays open is told when it is expanded
        } else if (text[at] == ',') {
            parts.emplace_back(text.substr(start, at - start));
            start = at + 1;
        }
    }
    parts.emplace_back(text.substr(start));
    return parts;
}

std::string foldRanges(const std::vector<std::string>& names)
{
    std::string folded;
    const auto append = [&](std::string_view part) {
        folded += folded.empty() ? "" : ",";
        folded += part;
    };
    for (std::size_t index = 0; index < names.size(); ++index) {
        const std::optional<Numbered> first = splitNumber(names[index]);
        if (!first) {
            append(names[index]);
            continue;
        }
        Numbered last = *first;
        for (; index + 1 < names.size(); ++index) {
            const std::optional<Numbered> next = splitNumber(names[index + 1]);
            if (!next || !follows(*next, last)) {
                break;
            }
            last = *next;
        }
        append(describeRun(*first, last));
    }
    return folded;
}
