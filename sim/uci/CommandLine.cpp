// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/CommandLine.h"

#include "sim/uci/UciError.h"
#include "sim/uci/Usage.h"

#include <cstddef>
#include <string_view>

namespace
{

struct CommandLine {
    bool isQuiet = false;
    bool mayCommit = true;
    std::string configDirectory = "/etc/config";
    std::string changesDirectory = "/tmp/.uci";
    std::string verb;
    std::vector<std::string> arguments;
};

// An option that nobody knows, or one without what belongs to it: the real tool ends with 0 then.
class UnknownOption
{
};

void takeDirectory(CommandLine& line, char option, const std::string& directory)
{
    (option == 'c' ? line.configDirectory : line.changesDirectory) = directory;
    if (option == 'P') {
        line.mayCommit = false;
    }
}

// Consumes the option at `position` with its value.
void takeOption(CommandLine& line, const std::vector<std::string>& words, std::size_t& position)
{
    const std::string& option = words[position++];
    if (option == "-q") {
        line.isQuiet = true;
        return;
    }
    if (option.size() == 2 && std::string_view("CdfmnNpsSX").find(option[1]) != std::string_view::npos) {
        throw NotSimulated(option);
    }
    if ((option != "-c" && option != "-t" && option != "-P") || position == words.size()) {
        throw UnknownOption();
    }
    takeDirectory(line, option[1], words[position++]);
}

// Without a command, the line has no verb.
CommandLine parse(const std::vector<std::string>& words)
{
    CommandLine line;
    std::size_t position = 0;
    while (position < words.size() && words[position].starts_with('-')) {
        takeOption(line, words, position);
    }
    if (position == words.size()) {
        return line;
    }
    line.verb = words[position++];
    line.arguments.assign(words.begin() + static_cast<std::ptrdiff_t>(position), words.end());
    return line;
}

ToolResult run(const CommandLine& line, Generation generation)
{
    if (line.verb.empty()) {
        return {0, "", usage};
    }
    const Session session{ConfigStore(line.configDirectory, line.changesDirectory), generation, line.isQuiet,
                          line.mayCommit};
    return runCommand(session, line.verb, line.arguments);
}

} // namespace

ToolResult runTool(const std::vector<std::string>& arguments, Generation generation)
{
    try {
        return run(parse(arguments), generation);
    } catch (const UnknownOption&) {
        return {0, "", usage};
    } catch (const UsageError&) {
        return {255, "", usage};
    } catch (const NotSimulated& error) {
        return {255, "", std::string("uci: ") + error.what() + "\n"};
    }
}
