// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Program.h"

#include "client/cli/Cli.h"
#include "client/cli/Context.h"
#include "client/cli/Document.h"
#include "client/engine/EventLoop.h"
#include "client/engine/InterruptSource.h"
#include "client/output/Console.h"
#include "client/output/Report.h"
#include "client/output/Streams.h"
#include "client/output/Writer.h"
#include "client/targets/Inventory.h"
#include "client/wire/HexText.h"
#include "client/wire/Network.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fmt/core.h>

namespace
{

std::string valueOfOutput(std::string_view word, std::string_view next)
{
    if (word == "-o" || word == "--output") {
        return std::string(next);
    }
    for (const std::string_view option : {"--output=", "-o"}) {
        if (word.starts_with(option)) {
            return std::string(word.substr(option.size()));
        }
    }
    return "";
}

// A broken command line has not been read whole, but a script that asked for JSON still gets it.
std::string formatAskedFor(int argc, const char* const* argv)
{
    for (int index = 1; index < argc; ++index) {
        std::string value = valueOfOutput(argv[index], index + 1 < argc ? argv[index + 1] : "");
        if (isFormat(value)) {
            return value;
        }
    }
    return std::string(defaultFormat);
}

void writeFailure(const Failure& failure, const CommandLine& line, const std::string& format)
{
    Result result;
    result.fail(failure);
    if (failure.code == ExitCode::internal) { // all others end the program before a card hears of it
        result.changed = std::nullopt;
    }
    const std::unique_ptr<Writer> writer = makeWriter(format);
    writer->begin(line.commandName, {});
    writer->add(result);
    writer->end(failure.code);
}

// Who is told about a command line, or about a fault of ours, needs no category.
void tellFailure(const Failure& failure, const Console& console)
{
    if (failure.code == ExitCode::usage || failure.code == ExitCode::internal) {
        console.error(failure.hint);
        return;
    }
    Result result;
    result.fail(failure);
    Report(console).tell(result);
}

int report(const Failure& failure, const CommandLine& line, const std::string& format)
{
    tellFailure(failure, Console(line.options.quiet, line.options.verbose));
    if (format.starts_with("json")) {
        writeFailure(failure, line, format);
    }
    return static_cast<int>(failure.code);
}

Failure internalFailure(const std::string& why)
{
    return {ExitCode::internal, Category::internal, "working", fmt::format("internal error: {}", why)};
}

// Who stopped reading has what they wanted; a disk that is full keeps data from somebody who wants it.
void finishOutput()
{
    if (finishData() == Delivery::failed) {
        throw internalFailure(fmt::format("cannot write the output: {}", std::strerror(errno)));
    }
}

// One that is given twice would be asked twice at once, and a card's two answers be taken for two cards.
std::vector<std::string> eachOnce(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

NetworkOptions networkOptions(const CommandLine& line, const Console& console)
{
    const GlobalOptions& options = line.options;
    const DryRun whenDry = line.command->changesCards() ? DryRun::changes : DryRun::everything;
    NetworkOptions result;
    result.timeoutGiven = options.timeout.has_value();
    result.policy.timeout = options.timeout ? Seconds(*options.timeout) : result.policy.timeout;
    result.policy.retries = options.retries;
    result.interfaces = eachOnce(options.interfaces);
    result.dryRun = options.dryRun ? whenDry : DryRun::off;
    result.warn = [&console](const std::string& text) { console.warning(text); };
    return result;
}

// Under --verbose: "10.0.0.11 <- 25 bytes: ..." for what is sent, "->" for what came.
FrameObserver frameTrace(const Console& console)
{
    if (!console.isVerbose()) {
        return {};
    }
    return [&](const std::string& peer, Direction direction, std::span<const std::byte> bytes) {
        // As long as the longest datagram that a card takes; of an archive nobody reads more.
        constexpr std::size_t mostTraced = 4096;
        console.trace(fmt::format("{} {} {} bytes: {}", peer, direction == Direction::sent ? "<-" : "->", bytes.size(),
                                  hexText(bytes, mostTraced)));
    };
}

// A document has no columns, and all that is known of each card.
void refuseOptionsOfTables(const GlobalOptions& options)
{
    if (options.columns || options.fold) {
        throw usageFailure("--columns and --fold are for tables, JSON and CSV (-o FORMAT), not for a document");
    }
}

std::unique_ptr<Writer> writerOf(CommandLine& line)
{
    const GlobalOptions& options = line.options;
    DocumentOption* document = line.command->document();
    // A dry run shows what it holds back, and leaves a file as it is.
    if (document == nullptr || options.output != defaultFormat || options.dryRun) {
        return makeWriter(options.output, options.columns ? columnNames(*options.columns) : std::vector<std::string>());
    }
    refuseOptionsOfTables(options);
    return makeDocumentWriter(*document,
                              [&](const std::vector<Result>& results) { return line.command->documentOf(results); });
}

// Also of a command that failed: what was lost may be why.
void tellLosses(const Network& network, const Console& console)
{
    const std::optional<std::string> losses = network.lost().describe();
    if (losses) {
        console.warning(*losses);
    }
}

ExitCode runCommand(CommandLine& line)
{
    const GlobalOptions& options = line.options;
    EventLoop loop;
    // Before anything is sent, and not before the command line is read: until here Ctrl-C may end the program at once.
    const InterruptSource interrupts;
    loop.setInterruptDescriptor(interrupts.descriptor());
    Console console(options.quiet, options.verbose);
    if (console.showsProgress()) {
        constexpr Seconds betweenDrawings(0.1);
        loop.setTicker(betweenDrawings, [&] { console.drawProgress(); });
    }
    const std::unique_ptr<Writer> writer = writerOf(line);
    // Behind the writer, which refuses wrong columns: what the user typed is wrong before what lies in a file is.
    const Inventory inventory = Inventory::load(options.groupsFile);
    Network network(loop, networkOptions(line, console), frameTrace(console));
    Context context{options, loop, console, *writer, network, inventory};
    try {
        const ExitCode code = line.command->run(context);
        tellLosses(network, console);
        return code;
    } catch (...) {
        tellLosses(network, console);
        throw;
    }
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
            writeData(line.text);
        }
        finishOutput();
        return static_cast<int>(code);
    } catch (const Failure& failure) {
        return report(failure, line, line.command ? line.options.output : formatAskedFor(argc, argv));
    } catch (const Interrupted&) {
        return report({ExitCode::interrupted, Category::interrupted, "working", "interrupted"}, line,
                      line.options.output);
    } catch (const std::exception& error) {
        return report(internalFailure(error.what()), line, line.options.output);
    }
}
