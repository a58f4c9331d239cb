// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/completion/CommandShape.h"

#include "client/cli/Command.h"
#include "client/cli/GlobalOptions.h"

#include <algorithm>
#include <sstream>

namespace
{

std::vector<std::string> splitNames(const std::string& names)
{
    std::vector<std::string> parts;
    std::istringstream stream(names);
    for (std::string part; std::getline(stream, part, ',');) {
        parts.push_back(part);
    }
    return parts;
}

// The word that the help shows for a value tells what it is.
ValueKind kindOf(const OptionSpec& spec)
{
    if (spec.isFlag()) {
        return ValueKind::none;
    }
    if (!spec.choices.empty()) {
        return ValueKind::choice;
    }
    if (spec.valueName == "FILE") {
        return ValueKind::file;
    }
    if (spec.valueName == "IF") {
        return ValueKind::interface;
    }
    return spec.valueName == "TARGET" || spec.valueName == "NAME" ? ValueKind::card : ValueKind::word;
}

void addSpecs(CommandShape& shape, const OptionSet& options)
{
    for (const OptionSpec& spec : options.specs()) {
        OptionShape option{splitNames(spec.names), spec.help, kindOf(spec), spec.choices,
                           std::holds_alternative<std::vector<std::string>*>(spec.destination)};
        (spec.isArgument() ? shape.arguments : shape.options).push_back(std::move(option));
    }
}

CommandShape shapeOf(const CommandRow& row)
{
    CommandShape shape{std::string(row.name), std::string(row.summary), {}, {}};
    OptionSet options;
    row.make()->declare(options); // the specs outlive the command, but nobody follows their destinations
    addSpecs(shape, options);
    return shape;
}

CommandShape shapeOfGlobalOptions()
{
    CommandShape shape;
    GlobalOptions globals;
    OptionSet options;
    globals.declare(options);
    addSpecs(shape, options);
    // The parser makes these two itself.
    shape.options.push_back({{"-h", "--help"}, "print the help and exit", ValueKind::none, {}, false});
    shape.options.push_back({{"-V", "--version"}, "print the version", ValueKind::none, {}, false});
    return shape;
}

bool contains(const std::vector<CommandShape>& shapes, std::string_view name)
{
    return std::any_of(shapes.begin(), shapes.end(), [&](const CommandShape& shape) { return shape.name == name; });
}

} // namespace

ProgramShape shapeOfProgram()
{
    ProgramShape shape;
    shape.program = shapeOfGlobalOptions();
    for (const CommandRow& row : commandTable()) {
        shape.commands.push_back(shapeOf(row));
        const std::size_t blank = row.name.find(' ');
        const std::string_view group = row.name.substr(0, blank);
        if (blank != std::string_view::npos && !contains(shape.groups, group)) {
            shape.groups.push_back({std::string(group), std::string(groupSummary(group)), {}, {}});
        }
    }
    return shape;
}

std::vector<CommandShape> wordsAfter(const ProgramShape& shape, std::string_view group)
{
    std::vector<CommandShape> words = group.empty() ? shape.groups : std::vector<CommandShape>();
    for (const CommandShape& command : shape.commands) {
        const std::size_t blank = command.name.find(' ');
        const bool single = blank == std::string::npos;
        if (group.empty() && single) {
            words.push_back({command.name, command.summary, {}, {}});
        } else if (!single && std::string_view(command.name).substr(0, blank) == group) {
            words.push_back({command.name.substr(blank + 1), command.summary, {}, {}});
        }
    }
    return words;
}
