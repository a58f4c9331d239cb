// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// One option or argument of a command, told once: the command line parser, the help, the completion scripts and the
// tests of the manual page all read it from here. Names are "-o,--output" or, for an argument, "TARGET".
struct OptionSpec {
    using Destination = std::variant<bool*, int*, double*, std::optional<double>*, std::string*,
                                     std::optional<std::string>*, std::vector<std::string>*>;

    std::string names;
    Destination destination;
    std::string help;
    std::string valueName;            // what the help shows for the value: "FILE", "HOST"
    std::vector<std::string> choices; // the only values accepted, if any
    bool required = false;
    double minimum = 0; // of numbers
    bool mayBeEmpty = true;

    [[nodiscard]] bool isArgument() const { return names.front() != '-'; }
    [[nodiscard]] bool isFlag() const { return std::holds_alternative<bool*>(destination); }
};

// What a command declares its options with; the variables must live as long as the command. What flag() and the others
// return may be completed as long as the set lives.
class OptionSet
{
public:
    // A switch, an option with a value, and a word without a dash, which is required unless that is taken back. What is
    // not given leaves its variable as it is.
    OptionSpec& flag(std::string names, bool& destination, std::string help);
    OptionSpec& value(std::string names, OptionSpec::Destination destination, std::string valueName, std::string help);
    OptionSpec& argument(const std::string& name, OptionSpec::Destination destination, std::string help);

    [[nodiscard]] const std::deque<OptionSpec>& specs() const { return all; }

private:
    OptionSpec& add(OptionSpec spec);

    std::deque<OptionSpec> all; // what an earlier call returned stays where it is
};
