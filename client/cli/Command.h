// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/OptionSet.h"
#include "client/model/ExitCode.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct Context;
struct DocumentOption;
struct Result;

// One command of the program. It is made when its name is found on the command line (and for help and completion),
// declares its options, and is run once.
class Command
{
public:
    virtual ~Command() = default;

    // Tells its options, whose values are there when it runs.
    virtual void declare(OptionSet& options) = 0;
    // A dry run of a command that changes cards still reads what it needs; of any other command it sends nothing.
    [[nodiscard]] virtual bool changesCards() const { return false; }
    // Where the document goes that the command has in place of a table, null if it has none; and its text.
    [[nodiscard]] virtual DocumentOption* document() { return nullptr; }
    [[nodiscard]] virtual std::string documentOf(const std::vector<Result>& /*results*/) { return {}; }
    // Does the job and prints its data through context.writer. A Failure that leaves run() is reported as the
    // program's own.
    virtual ExitCode run(Context& context) = 0;
};

// A row of the table of commands. The name is one word, or two for a command of a group: "time get".
struct CommandRow {
    std::string_view name;
    std::string_view summary;
    std::string_view examples; // shown under the help, one a line
    std::unique_ptr<Command> (*make)();
};

// All commands, in the order of the help; what a first word such as "time" is about, empty if it is none.
[[nodiscard]] std::span<const CommandRow> commandTable();
[[nodiscard]] std::string_view groupSummary(std::string_view group);
