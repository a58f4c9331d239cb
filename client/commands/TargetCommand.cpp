// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/TargetCommand.h"

#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/commands/Agreement.h"
#include "client/commands/NameCost.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Parallel.h"
#include "client/output/Console.h"
#include "client/output/Fold.h"
#include "client/output/Report.h"
#include "client/output/Writer.h"
#include "client/wire/Network.h"

#include <algorithm>
#include <fmt/core.h>
#include <iostream>

namespace
{

std::vector<Identified> withoutQuestions(std::vector<Target> targets)
{
    std::vector<Identified> cards(targets.size());
    for (std::size_t index = 0; index < cards.size(); ++index) {
        cards[index].target = std::move(targets[index]);
    }
    return cards;
}

void tellWarnings(const Console& console, const std::vector<Identified>& cards)
{
    for (const Identified& card : cards) {
        for (const std::string& warning : card.warnings) {
            console.warning(fmt::format("{}: {}", card.target.label, warning));
        }
        if (card.sameAs) {
            console.note(
                fmt::format("{} is {}: one card, one job", card.target.label, cards[*card.sameAs].target.label));
        }
    }
}

void warnOfNames(const Console& console, const std::vector<Target>& targets)
{
    for (const Target& target : targets) {
        if (const std::optional<std::string> doubt = target.doubtOfName()) {
            console.warning(fmt::format("{}; {} is meant", *doubt, target.name));
        }
    }
}

// Two jobs on one card would come into each other's way, and the second might undo the first.
std::vector<Identified> withoutRepetitions(std::vector<Identified> cards)
{
    for (const Identified& card : cards) {
        if (card.sameAs) {
            cards[*card.sameAs].again.push_back(card);
        }
    }
    std::erase_if(cards, [](const Identified& card) { return card.sameAs.has_value(); });
    return cards;
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

std::vector<Column> TargetCommand::columnsWhen(bool dryRun) const
{
    std::vector<Column> all = columns();
    if (takes() == Takes::namesOrAddresses && changesCards()) {
        all.emplace_back("checked");
    }
    if (tellsWhereFrom()) {
        all.emplace_back("address_from").shown = Shown::inCsvOnly;
    }
    for (const char* name : {"last_address", "last_heard", "there_now"}) { // of a name that is silent
        all.emplace_back(name).shown = Shown::nowhere;
    }
    if (dryRun) {
        all.insert(all.end(), {{"xml"}, {"frame"}});
    }
    return all;
}

bool TargetCommand::printsAtOnce(const Context& context) const
{
    return context.writer.streams() && !context.options.fold && !comparesTargets();
}

std::vector<Identified> TargetCommand::identify(Context& context, std::vector<Target> targets)
{
    if (!changesCards()) {
        warnOfNames(context.console, namesMatter() ? targets : std::vector<Target>());
        return withoutQuestions(std::move(targets));
    }
    const GlobalOptions& options = context.options;
    context.console.progress("", {"looking for the cards"});
    const Caution caution{options.force, options.trustGroups, !options.noProbe};
    Identification identification(context.network, way(), caution);
    noteCostOfChange(context.console, identification.namesToAsk(targets).size());
    std::vector<Identified> found = context.loop.run(identification.run(std::move(targets)));
    context.console.forgetJob("");
    tellWarnings(context.console, found);
    if (!options.dryRun) {
        renewal.emplace(context.network, way(), caution);
    }
    return withoutRepetitions(std::move(found));
}

std::vector<Target> TargetCommand::targetsOf(const Context& context) const
{
    const Networks networks = takesNetworks() ? Networks::expanded : Networks::refused;
    return withoutTargets(parseTargets(words, context.inventory, std::cin, networks), context.options.exclude,
                          context.inventory, std::cin);
}

ExitCode TargetCommand::run(Context& context)
{
    std::vector<Target> targets = meant(context, targetsOf(context));
    if (takes() == Takes::namesOnly) {
        requireNames(targets);
    }
    // Before the first output: what is wrong with the options leaves no heading of a table behind.
    prepare(context, targets);
    context.writer.begin(name(), columnsWhen(context.options.dryRun));
    jobs = identify(context, std::move(targets));
    askForAgreement(context);
    std::vector<Result> results(jobs.size());
    Report report(context.console);
    workInBatches(context, report, results);
    finish(context, results); // before the code: a comparison may be what fails
    // Who stopped a run cannot take it for a whole one, however well ended what was begun.
    const ExitCode code = context.loop.wasInterrupted() ? ExitCode::interrupted : commonCode(results);
    if (!printsAtOnce(context)) {
        for (const Result& result : context.options.fold ? fold(results) : results) {
            context.writer.add(result);
            report.tell(result);
        }
    }
    context.writer.end(code);
    report.count(results);
    return code;
}

std::string TargetCommand::planTitle(std::size_t cards) const
{
    return fmt::format("{} of {} cards:", name(), cards);
}

Task<std::string> TargetCommand::planOf(Context& /*context*/, Target /*target*/)
{
    co_return "";
}

Task<void> TargetCommand::planOne(Context& context, Target target, std::pair<std::string, std::string>& line)
{
    line.first = target.label;
    try {
        line.second = co_await planOf(context, std::move(target));
    } catch (const Failure& failure) { // to be seen before anybody agrees; the job itself may still go well
        line.second = fmt::format("{} while {}", wordOf(failure.category), failure.phase);
    }
}

void TargetCommand::askForAgreement(Context& context)
{
    std::vector<Target> meant;
    for (const Identified& card : jobs) {
        if (!card.refusal) {
            meant.push_back(card.target);
        }
    }
    const GlobalOptions& options = context.options;
    // One card is what was typed; a range or a group may hold more than was thought of.
    if (!changesCards() || meant.size() < 2 || options.yes || options.dryRun || !context.console.canAsk()) {
        return;
    }
    ChangePlan plan{planTitle(meant.size()), std::vector<std::pair<std::string, std::string>>(meant.size())};
    context.console.progress("", {"looking at what they have"});
    context.loop.run(inParallel(context.loop, meant.size(), static_cast<std::size_t>(options.parallel),
                                [&](std::size_t index) { return planOne(context, meant[index], plan.cards[index]); }));
    context.console.forgetJob("");
    requireAgreement(context, plan);
}
