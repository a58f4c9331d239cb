// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string>
#include <string_view>

// An address in the tool's dotted notation, "config[.section[.option]][=value]". Parts not given are empty.
struct Key {
    std::string config;
    std::string section; // a name, or "@type[i]"; whether it can be one is seen when it is looked up
    std::string option;
    std::optional<std::string> value;

    // Throws UciError for a text that is no key.
    static Key parse(std::string_view text);
};
