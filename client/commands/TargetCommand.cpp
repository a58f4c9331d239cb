// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/TargetCommand.h"

#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Parallel.h"
#include "client/output/Console.h"
#include "client/output/Fold.h"
#include "client/output/Writer.h"
#include "client/wire/Network.h"
#include "client/wire/Trace.h"

#include <fmt/core.h>
#include <iostream>

namespace
{

Failure interruptedFailure(const std::string& phase)
{
    return {ExitCode::interrupted, "interrupted", phase, "interrupted before the answer came"};
}

DryRun dryRunMode(const GlobalOptions& options, bool changesCards)
{
    if (!options.dryRun) {
        return DryRun::off;
    }
    return changesCards ? DryRun::changes : DryRun::everything;
}

void tellNotSent(Result& result, const Request& request)
{
    if (!request.xml.empty()) {
        result.add("xml", request.xml);
    }
    result.add("bytes", hexText(encode(request)));
    result.hint = "dry run: this request was not sent";
}

void requireNames(const std::vector<Target>& targets)
{
    for (const Target& target : targets) {
        if (target.name.empty()) {
            throw usageFailure(fmt::format("{} is an address, but this command addresses cards by name; an address has "
                                           "a name only if the groups file gives it one",
                                           target.label));
        }
    }
}

} // namespace

void TargetCommand::declare(OptionSet& options)
{
    declareOwn(options);
    const bool onlyNames = takes() == Takes::namesOnly;
    options.argument(onlyNames ? "NAME" : "TARGET", &words,
                     onlyNames ? "names, ranges card[01-16], @groups, or - for standard input"
                               : "names, addresses, ranges card[01-16], @groups, or - for standard input");
}

bool TargetCommand::printsAtOnce(const Context& context) const
{
    return context.writer.streams() && !context.options.fold && !comparesTargets();
}

void TargetCommand::print(Context& context, const Result& result) const
{
    context.writer.add(result);
    if (result.malformed) {
        context.console.warning(
            fmt::format("{}: the card's answer is no valid XML; it was read by its form", result.target));
    }
    if (!result.ok() && result.category != nothingToDoCategory) {
        context.console.error(
            fmt::format("{}: {} while {}: {}", result.target, result.category, result.phase, result.hint));
    } else if (!result.hint.empty()) {
        context.console.note(fmt::format("{}: {}", result.target, result.hint));
    }
}

Task<void> TargetCommand::workOnOne(Context& context, const Target& target, Result& result)
{
    result.target = target.label;
    try {
        if (context.loop.wasInterrupted()) {
            throw Interrupted();
        }
        co_await work(context, target, result);
    } catch (const Failure& failure) {
        result.fail(failure);
    } catch (const NotSent& held) {
        tellNotSent(result, held.request);
    } catch (const Interrupted&) {
        result.fail(interruptedFailure("waiting"));
    } catch (const std::exception& error) { // of one target; what was learned of the others is worth printing
        result.fail({ExitCode::internal, "internal", "working", fmt::format("internal error: {}", error.what())});
    }
    if (printsAtOnce(context)) {
        print(context, result);
    }
}

Task<void> TargetCommand::workOnAll(Context& context, const std::vector<Target>& targets, std::vector<Result>& results)
{
    co_await inParallel(context.loop, targets.size(), static_cast<std::size_t>(context.options.parallel),
                        [&](std::size_t index) { return workOnOne(context, targets[index], results[index]); });
}

ExitCode TargetCommand::run(Context& context)
{
    const std::vector<Target> targets = parseTargets(words, context.book, std::cin);
    if (takes() == Takes::namesOnly) {
        requireNames(targets);
    }
    prepare(context, targets);
    context.network.setDryRun(dryRunMode(context.options, changesCards()));
    context.writer.begin(name());
    std::vector<Result> results(targets.size());
    context.loop.run(workOnAll(context, targets, results));
    finish(context, results);
    const ExitCode code = context.loop.wasInterrupted() ? ExitCode::interrupted : commonCode(results);
    if (!printsAtOnce(context)) {
        for (const Result& result : context.options.fold ? fold(results) : results) {
            print(context, result);
        }
    }
    context.writer.end(code);
    return code;
}
