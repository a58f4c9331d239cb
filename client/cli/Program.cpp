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

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fmt/core.h>

namespace
{

// A broken command line has not been read whole, but a script that asked for JSON still gets it.
std::string formatAskedFor(int argc, const char* const* argv)
{
    for (int index = 1; index < argc; ++index) {
        const std::string_view word = argv[index];
        const bool isAlone = word == "-o" || word == "--output";
        if (isAlone && index + 1 < argc) {
            return argv[index + 1];
        }
        for (const std::string_view option : {"--output=", "-o"}) {
            if (!isAlone && word.starts_with(option)) {
                return std::string(word.substr(option.size()));
            }
        }
    }
    return "table";
}

void writeFailure(const Failure& failure, const CommandLine& line, const std::string& format)
{
    Result result;
    result.fail(failure);
    const std::unique_ptr<Writer> writer = makeWriter(format);
    writer->begin(line.commandName);
    writer->add(result);
    writer->end(failure.code);
}

int report(const Failure& failure, const CommandLine& line, const std::string& format)
{
    Console(line.options.quiet, line.options.verbose).error(failure.hint);
    try {
        if (format.starts_with("json")) {
            writeFailure(failure, line, format);
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): stdout itself is what fails; stderr has it all
    }
    return static_cast<int>(failure.code);
}

Failure internalFailure(const std::string& why)
{
    return {ExitCode::internal, "internal", "working", fmt::format("internal error: {}", why)};
}

// What is still in the buffer may find the disk full or the reader gone, and then the data is not out.
void finishOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw internalFailure(fmt::format("cannot write the output: {}", std::strerror(errno)));
    }
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
        ExitCode code = ExitCode::ok;
        if (line.command) {
            code = runCommand(line);
        } else {
            fmt::print("{}", line.text);
        }
        finishOutput();
        return static_cast<int>(code);
    } catch (const Failure& failure) {
        return report(failure, line, line.command ? line.options.output : formatAskedFor(argc, argv));
    } catch (const Interrupted&) {
        return report({ExitCode::interrupted, "interrupted", "working", "interrupted"}, line, line.options.output);
    } catch (const std::exception& error) {
        return report(internalFailure(error.what()), line, line.options.output);
    }
}
