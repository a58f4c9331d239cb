// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
//
// The jobs of a TargetCommand: how they run at once, in batches, and end.
#include "client/commands/TargetCommand.h"

#include "client/card/Identity.h"
#include "client/card/Lookup.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/commands/NameCost.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Parallel.h"
#include "client/engine/Slots.h"
#include "client/model/Contains.h"
#include "client/output/Console.h"
#include "client/output/Report.h"
#include "client/output/Writer.h"
#include "client/wire/HexText.h"
#include "client/wire/Network.h"
#include "client/wire/Phase.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

constexpr const char* waitingForAnswer = "waiting for the answer";

// With the exit code of what it is owed to.
Failure untouched(ExitCode code)
{
    return {code, Category::untouched, "waiting", "a card of an earlier batch failed"};
}

Failure interruptedFailure(const std::string& phase)
{
    return {ExitCode::interrupted, Category::interrupted, phase, "interrupted before the answer came"};
}

void tellNotSent(Result& result, const Request& request)
{
    if (!request.xml.empty()) {
        result.add("xml", request.xml);
    }
    result.add("frame", hexText(encode(request)));
    result.changed = false;
    result.hint = "dry run: this request was not sent";
}

} // namespace

std::string TargetCommand::addressFrom(const Target& target)
{
    if (target.heard) {
        return wayTo(*target.heard) ? "lookup" : "";
    }
    return target.hasNotedAddress() ? "groups" : "";
}

void TargetCommand::addAddressFrom(std::string from, Result& result)
{
    if (!from.empty()) {
        result.add("address_from", std::move(from));
    }
}

bool TargetCommand::mustLookUp(const Context& context, const Target& target) const
{
    // A dry run of what only reads sends nothing, not even the question where a card is.
    const bool isHeldBack = context.options.dryRun && !changesCards();
    const bool isAsked = needsAnswer(target) || (asksNotedNames() && target.hasNotedAddress());
    return looksUpNames() && isAsked && !isHeldBack;
}

bool TargetCommand::needsAnswer(const Target& target) const
{
    return takes() == Takes::namesOnly || !target.endpoint;
}

std::vector<std::string> TargetCommand::namesToLookUp(const Context& context, std::span<const Identified> cards) const
{
    std::vector<std::string> names;
    for (const Identified& card : cards) {
        if (mustLookUp(context, card.target)) {
            names.push_back(card.target.name);
        }
    }
    noteCostOfNames(context.console, names.size());
    return names;
}

// What the jobs of all targets share. The time of a lookup takes no job's place.
struct TargetCommand::Run {
    Context& context;
    Report& report;
    Lookup lookup;
    Slots slots;
};

Task<void> TargetCommand::lookUpAndWork(Run& run, Identified& card, Result& result)
{
    Target& target = card.target;
    const bool isLookedUp = mustLookUp(run.context, target);
    if (isLookedUp) {
        run.context.console.progress(target.label, {lookingForCard});
        target.heard = co_await run.lookup.answerOf(target.name);
    }
    const Slots::Held slot = co_await run.slots;
    run.context.console.progress(target.label, {waitingForAnswer});
    // The place may have come free because of the Ctrl-C.
    run.context.loop.refuseAfterInterrupt();
    if (card.refusal) {
        throw Failure(*card.refusal);
    }
    if (isLookedUp && !target.heard && needsAnswer(target)) {
        tellNotFound(result);
        const Silence silence = co_await run.lookup.explainSilence(target.name);
        std::ranges::copy(silence.fields, std::back_inserter(result.fields));
        throw Failure(silence.failure);
    }
    if (isLookedUp && target.heard && takes() == Takes::namesOrAddresses) {
        target.heard = co_await run.lookup.reachableAnswerOf(target.name);
    }
    co_await lookAgain(run.context, target);
    // For a command that is one question, and has no phase of its own.
    co_await inPhase(waitingForAnswer, work(run.context, target, result));
}

Task<void> TargetCommand::lookAgain(Context& context, const Target& target)
{
    if (!renewal) {
        co_return;
    }
    Identified& card = *std::ranges::find(jobs, &target, [](const Identified& one) { return &one.target; });
    const std::vector<std::string> told = card.warnings;
    co_await renewal->renew(card);
    for (const std::string& warning : card.warnings) {
        if (!contains(told, warning)) {
            context.console.warning(fmt::format("{}: {}", target.label, warning));
        }
    }
}

void TargetCommand::tellHowFound(const Identified& card, Result& result) const
{
    if (card.refusal) {
        std::ranges::copy(card.silence, std::back_inserter(result.fields));
    }
    if (takes() == Takes::namesOnly) {
        return;
    }
    if (changesCards()) {
        result.add("checked", card.checked);
    }
    if (tellsWhereFrom() && !card.refusal) {
        addAddressFrom(addressFrom(card.target), result);
    }
}

Task<void> TargetCommand::workOnOne(Run& run, Identified& card, Result& result)
{
    result.target = card.target.label;
    try {
        co_await lookUpAndWork(run, card, result);
    } catch (const Failure& failure) {
        result.fail(failure);
    } catch (const NotSent& held) { // no failure: what was held back is what a dry run shows
        tellNotSent(result, held.request);
    } catch (const Interrupted&) {
        result.fail(interruptedFailure("waiting"));
    } catch (const std::exception& error) { // of one target; what was learned of the others is worth printing
        result.fail(
            {ExitCode::internal, Category::internal, "working", fmt::format("internal error: {}", error.what())});
    }
    tellHowFound(card, result);
    run.context.console.finishJob(result.target);
    printEarly(run.context, run.report, result);
}

void TargetCommand::printEarly(Context& context, Report& report, const Result& result) const
{
    if (printsAtOnce(context)) {
        context.writer.add(result);
        report.tell(result);
    }
}

// The lookup runs beside the jobs, as one more of them.
Task<void> TargetCommand::workOnAll(Context& context, Report& report, std::span<Identified> batch,
                                    std::span<Result> results)
{
    const std::size_t places = isPatient() ? batch.size() : static_cast<std::size_t>(context.options.parallel);
    Run run{context, report, Lookup(context.network, namesToLookUp(context, batch)), Slots(context.loop, places)};
    const std::size_t all = batch.size() + 1;
    co_await inParallel(context.loop, all, all, [&](std::size_t index) {
        return index == batch.size() ? run.lookup.run() : workOnOne(run, batch[index], results[index]);
    });
    std::set<std::string> doubts = secondAnswers();
    std::ranges::move(run.lookup.secondAnswers(), std::inserter(doubts, doubts.end()));
    for (const std::string& doubt : doubts) {
        context.console.warning(doubt);
        takeDoubt(doubt);
    }
}

void TargetCommand::workInBatches(Context& context, Report& report, std::vector<Result>& results)
{
    const std::size_t size = batchSize() > 0 ? batchSize() : jobs.size();
    context.console.expectJobs(jobs.size());
    for (std::size_t first = 0; first < jobs.size(); first += size) {
        const std::size_t count = std::min(size, jobs.size() - first);
        const std::span<Result> batch = std::span(results).subspan(first, count);
        context.loop.run(workOnAll(context, report, std::span(jobs).subspan(first, count), batch));
        const auto failed = std::find_if(batch.begin(), batch.end(), [](const Result& one) { return !one.ok(); });
        if (failed == batch.end()) {
            continue;
        }
        // They are results, too: who reads the data sees each target that was given.
        for (std::size_t rest = first + count; rest < jobs.size(); ++rest) {
            results[rest].target = jobs[rest].target.label;
            results[rest].fail(untouched(failed->code));
            tellHowFound(jobs[rest], results[rest]);
            printEarly(context, report, results[rest]);
        }
        return;
    }
}
