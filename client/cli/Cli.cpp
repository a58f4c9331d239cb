// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Cli.h"

#include "client/cli/Document.h"
#include "client/cli/Version.h"
#include "client/model/ExitCode.h"
#include "client/model/Failure.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <iterator>
#include <span>
#include <sstream>
#include <type_traits>
#include <vector>

namespace
{

constexpr const char* summary = "Configures the cards that run tarveld: versions, time, IP addresses, firmware.";

std::string versionLine()
{
    return fmt::format("{}\n", programVersion());
}

struct OfferedCommand {
    const CommandRow* row;
    std::unique_ptr<Command> command;
    OptionSet options;
    CLI::App* app;
};

// Fits an int, and as seconds also the nanoseconds of a deadline.
constexpr double largestNumber = 1e9;

// A range lets it through, because it is neither smaller nor greater than anything.
std::string refuseNotANumber(const std::string& text)
{
    return std::isnan(std::strtod(text.c_str(), nullptr)) ? fmt::format("{} is no number", text) : std::string();
}

std::string refuseEmpty(const std::string& text)
{
    return text.empty() ? "it is empty" : "";
}

CLI::Option* addToParser(CLI::App& app, const OptionSpec& spec)
{
    return std::visit(
        [&](auto* destination) {
            using Value = std::remove_pointer_t<decltype(destination)>;
            if constexpr (std::is_same_v<Value, bool>) {
                return app.add_flag(spec.names, *destination, spec.help);
            } else {
                CLI::Option* option = app.add_option(spec.names, *destination, spec.help);
                if constexpr (std::is_same_v<Value, int> || std::is_same_v<Value, double>) {
                    option->check(CLI::Range(spec.minimum, largestNumber))
                        ->check(refuseNotANumber)
                        ->capture_default_str();
                } else if constexpr (std::is_same_v<Value, std::optional<double>>) {
                    option->check(CLI::Range(spec.minimum, largestNumber))->check(refuseNotANumber);
                }
                return option;
            }
        },
        spec.destination);
}

void describe(CLI::App& app, const OptionSpec& spec)
{
    CLI::Option* option = addToParser(app, spec);
    option->required(spec.required);
    if (spec.isFlag()) {
        return;
    }
    if (!spec.isArgument()) {
        option->option_text(spec.valueName);
        option->allow_extra_args(false); // -i lan0 card1: the second word is a target
    } else {
        option->option_text(" "); // its name says all
    }
    if (!spec.mayBeEmpty) {
        option->check(refuseEmpty);
    }
    if (!spec.choices.empty()) {
        option->check(CLI::IsMember(spec.choices));
    }
}

CLI::App& groupOf(CLI::App& app, std::string_view name)
{
    const std::size_t space = name.find(' ');
    if (space == std::string_view::npos) {
        return app;
    }
    const std::string group(name.substr(0, space));
    const auto known = app.get_subcommands([&](const CLI::App* one) { return one->get_name() == group; });
    if (!known.empty()) {
        return *known.front();
    }
    return *app.add_subcommand(group, std::string(groupSummary(group)))->require_subcommand(1);
}

// The program's own options would bury those of a command, so its help only says that they are there.
std::string footerOf(std::string_view examples)
{
    std::istringstream lines{std::string(examples)};
    std::string text = "Examples:";
    for (std::string line; std::getline(lines, line);) {
        text += "\n  " + line;
    }
    return text + "\n\nOptions for all commands, such as -o json and --timeout: tarvelctl --help";
}

using Words = std::span<const char* const>;

// Scripts ask for it before anything else; the description of all options would be half of the work.
bool asksForVersionAlone(Words words)
{
    return words.size() == 2 && (words[1] == std::string_view("-V") || words[1] == std::string_view("--version"));
}

// A command can be meant only if each word of its name stands somewhere on the command line.
bool isTyped(const CommandRow& row, Words words)
{
    const auto occurs = [&](std::string_view wanted) {
        return std::ranges::any_of(words, [&](std::string_view word) { return word == wanted; });
    };
    const std::size_t space = row.name.find(' ');
    return occurs(row.name.substr(0, space)) && (space == std::string_view::npos || occurs(row.name.substr(space + 1)));
}

void describeCommand(OfferedCommand& offered)
{
    offered.command = offered.row->make();
    offered.app->footer(footerOf(offered.row->examples));
    offered.command->declare(offered.options);
    for (const OptionSpec& spec : offered.options.specs()) {
        describe(*offered.app, spec);
    }
}

std::string listOfExitStatuses()
{
    std::string text = "Exit status:";
    for (const ExitStatus& status : exitStatuses()) {
        text += fmt::format("\n  {:<5}{}", static_cast<int>(status.code), status.meaning);
    }
    return text;
}

// All by name, for the help and for what is said of a wrong word; to describe the options of those that are not typed
// would take longer than many a command runs.
std::vector<OfferedCommand> offerCommands(CLI::App& app, Words words)
{
    std::vector<OfferedCommand> offered;
    for (const CommandRow& row : commandTable()) {
        const std::string word(row.name.substr(row.name.find(' ') + 1)); // npos + 1 is 0: the only word
        CLI::App* one = groupOf(app, row.name).add_subcommand(word, std::string(row.summary));
        offered.push_back({&row, nullptr, {}, one});
        if (isTyped(row, words)) {
            describeCommand(offered.back());
        }
    }
    return offered;
}

// What the parser says of a missing command names neither the word that is none nor the words that there are.
Failure missingWord(const CLI::App& app, const CLI::RequiredError& error)
{
    const std::vector<const CLI::App*> parsed = app.get_subcommands([](const CLI::App* one) { return one->parsed(); });
    const CLI::App& group = parsed.empty() ? app : *parsed.front();
    const std::vector<const CLI::App*> words = group.get_subcommands([](const CLI::App*) { return true; });
    if (words.empty() || std::any_of(words.begin(), words.end(), [](const CLI::App* one) { return one->parsed(); })) {
        return usageFailure(error.what());
    }
    std::vector<std::string> names;
    std::ranges::transform(words, std::back_inserter(names), [](const CLI::App* one) { return one->get_name(); });
    const std::vector<std::string> others = app.remaining(true); // of the groups, too
    const std::string found =
        others.empty() ? "no command is given" : fmt::format("there is no command \"{}\"", others.front());
    const std::string place = parsed.empty() ? "" : fmt::format(" of {}", group.get_name());
    return usageFailure(fmt::format("{}; the commands{} are {}", found, place, fmt::join(names, ", ")));
}

// Of a command line that is refused, too, JSON names the command.
void nameCommand(const std::vector<OfferedCommand>& offered, CommandLine& line)
{
    for (const OfferedCommand& one : offered) {
        if (one.app->parsed()) {
            line.commandName = one.row->name;
        }
    }
}

void chooseCommand(std::vector<OfferedCommand>& offered, CommandLine& line)
{
    for (OfferedCommand& one : offered) {
        if (one.app->parsed()) {
            line.command = std::move(one.command);
            if (DocumentOption* document = line.command->document()) {
                document->settle(line.options.output);
            }
        }
    }
}

} // namespace

void parseCommandLine(int argc, const char* const* argv, CommandLine& line)
{
    if (asksForVersionAlone(Words(argv, static_cast<std::size_t>(argc)))) {
        line.text = versionLine();
        return;
    }
    CLI::App app(summary, "tarvelctl");
    app.fallthrough(); // options of the program are understood after the command's name, too
    app.require_subcommand(1);
    app.set_version_flag("-V,--version", versionLine(), "print the version");
    app.footer(listOfExitStatuses());
    OptionSet options;
    line.options.declare(options);
    for (const OptionSpec& spec : options.specs()) {
        describe(app, spec);
    }
    std::vector<OfferedCommand> offered = offerCommands(app, Words(argv, static_cast<std::size_t>(argc)));
    try {
        app.parse(argc, argv);
        nameCommand(offered, line);
        chooseCommand(offered, line);
    } catch (const CLI::CallForHelp&) {
        line.text = app.help();
    } catch (const CLI::CallForVersion&) {
        line.text = versionLine();
    } catch (const CLI::RequiredError& error) {
        nameCommand(offered, line);
        throw missingWord(app, error);
    } catch (const CLI::ParseError& error) {
        nameCommand(offered, line);
        throw usageFailure(error.what());
    }
}
