// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/CommandLine.h"

#include <cstddef>

#include "sim/uci/Commands.h"
#include "sim/uci/ConfigStore.h"
#include "sim/uci/UciError.h"

namespace
{

constexpr const char* usage =
    "Usage: uci [-q] [-c <config directory>] [-t|-P <changes directory>] <command> [<argument>]\n"
    "Commands: get, set, delete, changes, commit, revert, show\n";

struct CommandLine {
    bool isQuiet = false;
    std::string configDirectory = "/etc/config";
    std::string changesDirectory = "/tmp/.uci";
    std::string verb;
    std::vector<std::string> arguments;
};

// Consumes the option at `position` with its value.
void takeOption(CommandLine& line, const std::vector<std::string>& words, std::size_t& position)
{
    const std::string& option = words[position++];
    if (option == "-q") {
        line.isQuiet = true;
        return;
    }
    if (option != "-c" && option != "-t" && option != "-P")
        throw UsageError("unknown option: " + option);
    if (position == words.size())
        throw UsageError("option " + option + " needs a directory");
    (option == "-c" ? line.configDirectory : line.changesDirectory) = words[position++];
}

void parse(CommandLine& line, const std::vector<std::string>& words)
{
    std::size_t position = 0;
    while (position < words.size() && words[position].starts_with('-'))
        takeOption(line, words, position);
    if (position == words.size())
        throw UsageError("command missing");
    line.verb = words[position++];
    line.arguments.assign(words.begin() + static_cast<std::ptrdiff_t>(position), words.end());
}

} // namespace

ToolResult runTool(const std::vector<std::string>& arguments)
{
    CommandLine line;
    ToolResult result;
    try {
        parse(line, arguments);
        result.output = runCommand(ConfigStore(line.configDirectory, line.changesDirectory), line.verb, line.arguments);
    } catch (const UsageError& error) {
        result.status = 255;
        result.errors = std::string("uci: ") + error.what() + "\n" + usage;
    } catch (const UciError& error) {
        result.status = 1;
        result.errors = std::string("uci: ") + error.what() + "\n";
    }
    if (line.isQuiet)
        result.errors.clear();
    return result;
}
