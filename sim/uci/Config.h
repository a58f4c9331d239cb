// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>
#include <vector>

// A named value, or a named list of values.
struct Option {
    std::string name;
    bool isList = false;
    std::vector<std::string> values;
};

struct Section {
    std::string type;
    std::string name;
    bool anonymous = false;
    std::vector<Option> options;

    Option* find(std::string_view optionName);
    const Option* find(std::string_view optionName) const;

    // Makes the option a single value, at its old place if it has one.
    void set(std::string_view optionName, std::string_view value);
    // Adds to the option as a list; a single value becomes the list's first item.
    void append(std::string_view optionName, std::string value);
    // False if there is none.
    bool remove(std::string_view optionName);
};

// One configuration file: its sections in file order.
struct Package {
    std::string name;
    std::vector<Section> sections;

    // The section with this name, or number i of its type for "@type[i]" (negative: from the end; no type: any).
    // Null if there is none; throws UciError for a text that is neither.
    const Section* find(std::string_view selector) const;
    Section* find(std::string_view selector);

    // "@type[i]" for a section that has no name of its own, else its name.
    std::string displayName(const Section& section) const;

    // Adds a section at the end. One without a name gets one that is the same each time the same file is read, because
    // staged changes refer to it: "cfg", its number among the sections, and four digits made from its type.
    void add(std::string type, std::string sectionName);

    void remove(std::string_view sectionName);
};
