// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Commands.h"

#include "sim/uci/PackageCommands.h"
#include "sim/uci/SectionCommands.h"
#include "sim/uci/UciError.h"

#include <algorithm>
#include <array>
#include <strings.h>

namespace
{

struct Command {
    const char* verb;
    bool needsArgument; // else it is about all configurations without one
    std::string (*run)(const Session&, const Target&);
};

constexpr std::array commands{
    Command{"get", true, get},        Command{"set", true, set},       Command{"delete", true, remove},
    Command{"del", true, remove},     Command{"show", false, show},    Command{"changes", false, changes},
    Command{"commit", false, commit}, Command{"revert", true, revert},
};

constexpr std::array notSimulated{"batch",    "export", "import", "add",     "add_list",
                                  "del_list", "rename", "ren",    "reorder", "help"};

auto spelled(const std::string& verb)
{
    return [&verb](const char* known) { return ::strcasecmp(known, verb.c_str()) == 0; };
}

const Command& commandOf(const std::string& verb)
{
    if (std::ranges::any_of(notSimulated, spelled(verb))) {
        throw NotSimulated(verb);
    }
    const auto* command = std::ranges::find_if(commands, spelled(verb), &Command::verb);
    if (command == commands.end()) {
        throw UsageError();
    }
    return *command;
}

void fail(ToolResult& result, const Session& session, const UciError& error)
{
    result.status = 1;
    const std::string reason = error.what();
    if (!session.isQuiet && !reason.empty()) {
        result.errors += "uci: " + reason + "\n";
    }
}

void runOn(ToolResult& result, const Session& session, const Command& command, const std::string& argument)
{
    try {
        result.output += command.run(session, Target(session.store, argument));
    } catch (const UciError& error) {
        fail(result, session, error);
    }
}

// Each failure is told, and none of them counts.
void runOnAll(ToolResult& result, const Session& session, const Command& command)
{
    try {
        for (const std::string& config : session.store.names()) {
            runOn(result, session, command, config);
        }
        result.status = 0;
    } catch (const UciError& error) {
        fail(result, session, error);
    }
}

} // namespace

ToolResult runCommand(const Session& session, const std::string& verb, const std::vector<std::string>& arguments)
{
    const Command& command = commandOf(verb);
    if (arguments.size() > 1 || (arguments.empty() && command.needsArgument)) {
        throw UsageError();
    }
    ToolResult result;
    if (arguments.empty()) {
        runOnAll(result, session, command);
    } else {
        runOn(result, session, command, arguments.front());
    }
    return result;
}
