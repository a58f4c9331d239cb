// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Config.h"

#include "sim/uci/Names.h"
#include "sim/uci/UciError.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace
{

struct IndexedSelector {
    std::string_view type;
    int index;
};

// "@type[i]"
IndexedSelector parseIndexed(std::string_view selector)
{
    const std::size_t bracket = selector.find('[');
    if (!selector.starts_with('@') || bracket == std::string_view::npos || !selector.ends_with(']')) {
        throw UciError::invalidArgument();
    }
    const std::string_view digits = selector.substr(bracket + 1, selector.size() - bracket - 2);
    int index = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    if (error != std::errc{} || end != digits.data() + digits.size()) {
        throw UciError::invalidArgument();
    }
    return IndexedSelector{selector.substr(1, bracket - 1), index};
}

const Section* findIndexed(const std::vector<Section>& sections, IndexedSelector wanted)
{
    std::vector<const Section*> candidates;
    for (const Section& section : sections) {
        if (wanted.type.empty() || section.type == wanted.type) {
            candidates.push_back(&section);
        }
    }
    const int count = static_cast<int>(candidates.size());
    const int index = wanted.index < 0 ? wanted.index + count : wanted.index;
    return index >= 0 && index < count ? candidates[static_cast<std::size_t>(index)] : nullptr;
}

// Bernstein's hash. It is taken when the section begins, so its options do not count.
std::string madeUpName(std::string_view type, std::size_t number)
{
    std::uint32_t hash = 5381;
    for (const char c : type) {
        hash = hash * 33 + static_cast<unsigned char>(c);
    }
    char text[32];
    std::snprintf(text, sizeof text, "cfg%02zx%04x", number, static_cast<unsigned>(hash & 0xffffU));
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
    if (option == nullptr) {
        option = &options.emplace_back(Option{std::string(optionName), false, {}});
    }
    option->isList = false;
    option->values.assign(1, std::string(value));
}

void Section::append(std::string_view optionName, std::string value)
{
    Option* option = find(optionName);
    if (option == nullptr) {
        option = &options.emplace_back(Option{std::string(optionName), true, {}});
    }
    option->isList = true;
    option->values.push_back(std::move(value));
}

bool Section::remove(std::string_view optionName)
{
    return std::erase_if(options, [&](const Option& option) { return option.name == optionName; }) > 0;
}

const Section* Package::find(std::string_view selector) const
{
    if (!isName(selector)) {
        return findIndexed(sections, parseIndexed(selector));
    }
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
    if (!section.anonymous) {
        return section.name;
    }
    int index = 0;
    for (const Section& other : sections) {
        if (&other == &section) {
            break;
        }
        index += other.type == section.type ? 1 : 0;
    }
    return std::string("@").append(section.type).append("[").append(std::to_string(index)).append("]");
}

void Package::add(std::string type, std::string sectionName)
{
    const bool anonymous = sectionName.empty();
    if (anonymous) {
        sectionName = madeUpName(type, sections.size() + 1);
    }
    sections.push_back({std::move(type), std::move(sectionName), anonymous, {}});
}

void Package::remove(std::string_view sectionName)
{
    std::erase_if(sections, [&](const Section& section) { return section.name == sectionName; });
}
