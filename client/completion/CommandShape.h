// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The command line as completion scripts see it: which words there are, and what may stand where.

enum class ValueKind { none, word, choice, file, interface, card };

struct OptionShape {
    std::vector<std::string> names; // "-o" and "--output"; of an argument its one name
    std::string help;
    ValueKind kind = ValueKind::none;
    std::vector<std::string> choices;
    bool repeats = false;
};

struct CommandShape {
    std::string name; // as in the table of commands; empty for the program itself
    std::string summary;
    std::vector<OptionShape> options;
    std::vector<OptionShape> arguments;
};

struct ProgramShape {
    CommandShape program;             // the options that every command understands
    std::vector<CommandShape> groups; // first words of commands that have two
    std::vector<CommandShape> commands;
};

// Of all commands, which are made for it and asked for their options.
[[nodiscard]] ProgramShape shapeOfProgram();

// The words that may follow `group` (empty: the program's name), with their summaries and nothing else.
[[nodiscard]] std::vector<CommandShape> wordsAfter(const ProgramShape& shape, std::string_view group);
