// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Discovery.h"
#include "client/card/Lookup.h"
#include "client/cli/Command.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/commands/Commands.h"
#include "client/commands/Findings.h"
#include "client/commands/NameCost.h"
#include "client/engine/Parallel.h"
#include "client/model/Ranges.h"
#include "client/output/Console.h"
#include "client/output/Report.h"
#include "client/output/Writer.h"
#include "client/targets/Targets.h"
#include "client/wire/HexText.h"

#include <algorithm>
#include <fmt/core.h>
#include <iostream>
#include <iterator>
#include <utility>

namespace
{

Result resultOf(const FoundCard& card)
{
    Result result;
    result.target = card.address;
    result.add("interface", card.interface);
    result.add("reachable", card.reachable);
    if (!card.reachable) {
        result.hint =
            "its address is outside the network of this interface; the ip commands reach it by its name all the same";
    }
    return result;
}

Result resultOf(const Request& probe)
{
    Result result;
    result.add("frame", hexText(encode(probe)));
    return result;
}

class DiscoverCommand final : public Command
{
public:
    void declare(OptionSet& options) override
    {
        options.value("--expect", &expected, "N",
                      "stop as soon as N names, or addresses on one interface, were heard; fewer are a failure");
        options.value("--names", &nameWords, "NAMES",
                      "ask for these names, too: a range such as card[1-64] (repeatable)");
    }

    ExitCode run(Context& context) override
    {
        names = namesIn(context);
        checkExpectation(context);
        context.writer.begin("discover", columnsWhen(context.options.dryRun));
        return context.options.dryRun ? showProbes(context) : search(context);
    }

private:
    [[nodiscard]] std::vector<std::string> namesIn(const Context& context) const
    {
        if (nameWords.empty()) {
            if (!context.options.exclude.empty()) {
                throw usageFailure("--exclude takes names of --names away, and none are given");
            }
            return {};
        }
        const std::vector<Target> targets = withoutTargets(parseTargets(nameWords, context.inventory, std::cin),
                                                           context.options.exclude, context.inventory, std::cin);
        requireNames(targets);
        std::vector<std::string> found;
        std::transform(targets.begin(), targets.end(), std::back_inserter(found),
                       [](const Target& target) { return target.name; });
        return found;
    }

    // Cards have an address on each of their networks, so that addresses of several count no cards.
    void checkExpectation(const Context& context) const
    {
        if (expected == 0) {
            return;
        }
        if (names.empty() && context.network.openInterfaces().size() != 1) {
            throw usageFailure("--expect counts the addresses of one interface: name it with -i, or name the cards "
                               "with --names");
        }
        if (!names.empty() && enough() > names.size()) {
            throw usageFailure(fmt::format("--expect {}, but {} names are given", expected, names.size()));
        }
    }

    [[nodiscard]] std::size_t enough() const { return static_cast<std::size_t>(expected); }

    [[nodiscard]] std::vector<Column> columnsWhen(bool dryRun) const
    {
        if (dryRun) {
            return {{"frame"}};
        }
        std::vector<Column> columns = {{"target", 15}, {"interface", 9}, {"reachable", 9}};
        if (!names.empty()) {
            columns.emplace_back("name", 4);
        }
        return columns;
    }

    static ExitCode showProbes(Context& context)
    {
        const auto probes = Discovery::makeProbes();
        context.writer.add(resultOf(probes.first));
        context.writer.add(resultOf(probes.second));
        context.writer.end(ExitCode::ok);
        return ExitCode::ok;
    }

    ExitCode search(Context& context)
    {
        context.console.progress("", {"listening"});
        try {
            context.loop.run(find(context));
        } catch (const Interrupted&) {
            // What was heard until then is printed already.
            context.console.note("interrupted: there may be more cards");
        }
        context.console.forgetJob("");
        const ExitCode code = context.loop.wasInterrupted() ? ExitCode::interrupted : verdict(context);
        context.writer.end(code);
        return code;
    }

    Task<void> find(Context& context)
    {
        constexpr int repetitions = 2; // three rounds, as the probes have
        constexpr Seconds time(1.2);   // as long as the probes listen
        noteCostOfNames(context.console, names.size());
        Lookup lookup(context.network, names, RetryPolicy{context.network.timeoutOr(time), repetitions});
        const std::size_t all = names.size() + 1;
        co_await inParallel(context.loop, all, all, [&](std::size_t index) {
            return index == names.size() ? lookup.run(expected == 0 ? names.size() : enough())
                                         : awaitName(context, lookup, names[index]);
        });
        // Behind the names, so that a card that answers by one is not told once more as an address.
        co_await findUnnamed(context);
        for (const std::string& doubt : lookup.secondAnswers()) { // until now
            context.console.warning(doubt);
        }
    }

    Task<void> findUnnamed(Context& context)
    {
        if (expected > 0 && !names.empty() && findings.named.size() >= enough()) {
            co_return;
        }
        const std::size_t addresses = names.empty() ? enough() : 0; // of names, addresses are not what was expected
        Discovery discovery(context.network, [&](const FoundCard& card) { takeUnnamed(context, card); });
        co_await discovery.run(addresses);
    }

    Task<void> awaitName(Context& context, Lookup& lookup, std::string name)
    {
        const std::optional<CardReply> answer = co_await lookup.answerOf(name);
        if (!answer) {
            findings.silent.push_back(name);
            co_return;
        }
        findings.named.emplace_back(answer->interface, answer->address);
        Result result = resultOf(cardAt(answer->address, answer->interface, lookup.interfaces()));
        result.add("name", name);
        print(context, result);
    }

    void takeUnnamed(Context& context, const FoundCard& card)
    {
        if (findings.isNamed(card)) {
            return;
        }
        ++findings.unnamed;
        Result result = resultOf(card);
        if (!names.empty()) {
            result.add("name", Cell());
        }
        print(context, result);
    }

    static void print(Context& context, const Result& result)
    {
        // The line of the progress may stand on the same terminal.
        context.console.eraseProgress();
        context.writer.add(result);
        if (!result.hint.empty()) {
            context.console.note(fmt::format("{}: {}", result.target, result.hint));
        }
    }

    static ExitCode tell(Context& context, const Result& result)
    {
        context.writer.add(result);
        Report(context.console).tell(result);
        return result.code;
    }

    ExitCode verdict(Context& context) const
    {
        const std::optional<Result> shortfall = findings.shortfall(enough(), !names.empty());
        if (shortfall) {
            return tell(context, *shortfall);
        }
        if (expected == 0 && !findings.silent.empty()) {
            context.console.note(fmt::format("these names did not answer: {}", foldRanges(findings.silent)));
        }
        return ExitCode::ok;
    }

    int expected = 0;
    std::vector<std::string> nameWords;
    std::vector<std::string> names;
    Findings findings;
};

} // namespace

std::unique_ptr<Command> makeDiscover()
{
    return std::make_unique<DiscoverCommand>();
}
