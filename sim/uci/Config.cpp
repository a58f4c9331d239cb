// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/Config.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace
{

struct IndexedSelector {
    std::string_view type;
    int index;
};

// "@type[i]"; nothing for any other text.
std::optional<IndexedSelector> parseIndexed(std::string_view selector)
{
    const std::size_t bracket = selector.find('[');
    if (!selector.starts_with('@') || bracket == std::string_view::npos || !selector.ends_with(']'))
        return std::nullopt;
    const std::string_view digits = selector.substr(bracket + 1, selector.size() - bracket - 2);
    int index = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    if (error != std::errc{} || end != digits.data() + digits.size())
        return std::nullopt;
    return IndexedSelector{selector.substr(1, bracket - 1), index};
}

const Section* findIndexed(const std::vector<Section>& sections, IndexedSelector wanted)
{
    std::vector<const Section*> candidates;
    for (const Section& section : sections) {
        if (wanted.type.empty() || section.type == wanted.type)
            candidates.push_back(&section);
    }
    const int count = static_cast<int>(candidates.size());
    const int index = wanted.index < 0 ? wanted.index + count : wanted.index;
    return index >= 0 && index < count ? candidates[static_cast<std::size_t>(index)] : nullptr;
}

std::uint32_t hash(std::uint32_t seed, std::string_view text)
{
    for (const char c : text)
        seed = seed * 33 + static_cast<unsigned char>(c);
    return seed;
}

std::string anonymousName(const Section& section, unsigned number)
{
    std::uint32_t sum = hash(~0U, section.type);
    for (const Option& option : section.options) {
        sum = hash(sum, option.name);
        for (const std::string& value : option.values)
            sum = hash(sum, value);
    }
    char text[16];
    std::snprintf(text, sizeof text, "cfg%02x%04x", number & 0xffU, sum & 0xffffU);
    return text;
}

} // namespace

const Option* Section::find(std::string_view optionName) const
{
    const auto found = std::ranges::find(options, optionName, &Option::name);
    return found == options.end() ? nullptr : &*found;
}

Option* Section::find(std::string_view optionName)
{
    const auto found = std::ranges::find(options, optionName, &Option::name);
    return found == options.end() ? nullptr : &*found;
}

void Section::set(std::string_view optionName, std::string_view value)
{
    Option* option = find(optionName);
    if (option == nullptr)
        option = &options.emplace_back(Option{std::string(optionName), false, {}});
    option->isList = false;
    option->values.assign(1, std::string(value));
}

void Section::append(std::string_view optionName, std::string value)
{
    Option* option = find(optionName);
    if (option == nullptr)
        option = &options.emplace_back(Option{std::string(optionName), true, {}});
    option->isList = true;
    option->values.push_back(std::move(value));
}

void Section::remove(std::string_view optionName)
{
    std::erase_if(options, [&](const Option& option) { return option.name == optionName; });
}

const Section* Package::find(std::string_view selector) const
{
    if (const auto indexed = parseIndexed(selector))
        return findIndexed(sections, *indexed);
    const auto found = std::ranges::find(sections, selector, &Section::name);
    return found == sections.end() ? nullptr : &*found;
}

Section* Package::find(std::string_view selector)
{
    const Section* found = static_cast<const Package*>(this)->find(selector);
    return found == nullptr ? nullptr : &sections[static_cast<std::size_t>(found - sections.data())];
}

std::string Package::displayName(const Section& section) const
{
    if (!section.anonymous)
        return section.name;
    int index = 0;
    for (const Section& other : sections) {
        if (&other == &section)
            break;
        index += other.type == section.type ? 1 : 0;
    }
    return std::string("@").append(section.type).append("[").append(std::to_string(index)).append("]");
}

void Package::nameAnonymousSections()
{
    unsigned number = 0;
    for (Section& section : sections) {
        ++number;
        if (section.anonymous)
            section.name = anonymousName(section, number);
    }
}

void Package::remove(std::string_view sectionName)
{
    std::erase_if(sections, [&](const Section& section) { return section.name == sectionName; });
}
