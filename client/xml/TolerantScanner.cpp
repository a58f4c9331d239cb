// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/xml/TolerantScanner.h"

#include <algorithm>

namespace
{

bool skip(std::string_view& text, std::string_view expected)
{
    if (!text.starts_with(expected)) {
        return false;
    }
    text.remove_prefix(expected.size());
    return true;
}

std::string opening(std::string_view attribute)
{
    return " " + std::string(attribute) + "=\"";
}

// Where the value at the front of the text ends: at the quote before a later attribute or before the element's end.
std::size_t findValueEnd(std::string_view text, std::span<const std::string_view> later, std::string_view end)
{
    std::size_t nearest = text.find('"' + std::string(end));
    for (const std::string_view attribute : later) {
        nearest = std::min(nearest, text.find('"' + opening(attribute)));
    }
    return nearest;
}

} // namespace

std::optional<XmlElement> scanElement(std::string_view& text, const ElementForm& form)
{
    // The text itself is moved on only if all fits.
    std::string_view rest = text;
    if (!skip(rest, "<") || !skip(rest, form.name)) {
        return std::nullopt;
    }
    XmlElement element{std::string(form.name), {}, {}};
    for (std::size_t index = 0; index < form.attributes.size(); ++index) {
        if (!skip(rest, opening(form.attributes[index]))) {
            continue;
        }
        const std::size_t length = findValueEnd(rest, form.attributes.subspan(index + 1), form.end);
        if (length == std::string_view::npos) {
            return std::nullopt;
        }
        element.attributes.emplace_back(form.attributes[index], rest.substr(0, length));
        rest.remove_prefix(length + 1);
    }
    if (!skip(rest, form.end)) {
        return std::nullopt;
    }
    text = rest;
    return element;
}
