// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Program.h"

#include "client/cli/Cli.h"
#include "client/cli/Context.h"
#include "client/engine/EventLoop.h"
#include "client/engine/InterruptSource.h"
#include "client/output/Console.h"
#include "client/output/Writer.h"
#include "client/targets/CardBook.h"
#include "client/wire/Network.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <fmt/core.h>

namespace
{

// A broken command line has not been read whole, but a script that asked for JSON still gets it.
std::string formatAskedFor(int argc, const char* const* argv)
{
    for (int index = 1; index + 1 < argc; ++index) {
        const std::string_view word = argv[index];
        if (word == "-o" || word == "--output") {
            return argv[index + 1];
        }
    }
    return "table";
}

int report(const Failure& failure, const CommandLine& line, const std::string& format)
{
    if (format.starts_with("json")) {
        Result result;
        result.fail(failure);
        const std::unique_ptr<Writer> writer = makeWriter(format);
        writer->begin(line.commandName);
        writer->add(result);
        writer->end(failure.code);
    }
    Console(line.options.quiet, line.options.verbose).error(failure.hint);
    return static_cast<int>(failure.code);
}

ExitCode runCommand(CommandLine& line)
{
    const GlobalOptions& options = line.options;
    EventLoop loop;
    const InterruptSource interrupts;
    loop.setInterruptDescriptor(interrupts.descriptor());
    Console console(options.quiet, options.verbose);
    const std::unique_ptr<Writer> writer = makeWriter(options.output);
    const CardBook book = CardBook::load(options.groupsFile);
    Network network(loop, console, {Seconds(options.timeout), options.retries}, options.interfaces);
    Context context{options, loop, console, *writer, network, book};
    return line.command->run(context);
}

} // namespace

int runProgram(int argc, const char* const* argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader of our output that goes away is no reason to leave a card half done
    CommandLine line;
    try {
        parseCommandLine(argc, argv, line);
        if (!line.command) {
            fmt::print("{}", line.text);
            return 0;
        }
        return static_cast<int>(runCommand(line));
    } catch (const Failure& failure) {
        return report(failure, line, formatAskedFor(argc, argv));
    } catch (const Interrupted&) {
        return report({ExitCode::interrupted, "interrupted", "working", "interrupted"}, line, line.options.output);
    } catch (const std::exception& error) {
        return report({ExitCode::internal, "internal", "working", fmt::format("internal error: {}", error.what())},
                      line, line.options.output);
    }
}
