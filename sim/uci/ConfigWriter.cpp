// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/ConfigWriter.h"

std::string quoted(std::string_view value)
{
    std::string text = "'";
    for (const char c : value) {
        if (c == '\'') {
            text += "'\\''";
        } else {
            text += c;
        }
    }
    return text + "'";
}

std::string writeConfig(const Package& package)
{
    std::string text;
    for (const Section& section : package.sections) {
        text += "\nconfig " + section.type;
        if (!section.anonymous) {
            text.append(" ").append(quoted(section.name));
        }
        text += "\n";
        for (const Option& option : section.options) {
            for (const std::string& value : option.values) {
                text.append(option.isList ? "\tlist " : "\toption ").append(option.name + " " + quoted(value) + "\n");
            }
        }
    }
    return text + "\n";
}
