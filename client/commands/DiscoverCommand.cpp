// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Command.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/commands/Commands.h"
#include "client/commands/Discovery.h"
#include "client/commands/Exchanges.h"
#include "client/engine/Parallel.h"
#include "client/model/Ranges.h"
#include "client/output/Console.h"
#include "client/output/Writer.h"
#include "client/wire/Trace.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

Failure nobody()
{
    return {ExitCode::noAnswer, "timeout", "listening for cards",
            "no card answered: none is on this network, or a firewall here drops the replies, which come from port "
            "50003, some of them as broadcasts"};
}

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
    result.add("bytes", hexText(encode(probe)));
    return result;
}

class DiscoverCommand final : public Command
{
public:
    void declare(OptionSet& options) override
    {
        options.value("--expect", &expected, "N", "stop as soon as N addresses were heard; fewer are a failure");
        options.value("--names", &names, "NAMES", "ask for these names, too: a range such as card[1-64] (repeatable)");
    }

    ExitCode run(Context& context) override
    {
        for (const std::string& range : names) {
            const std::vector<std::string> expanded = expandRanges(range);
            allNames.insert(allNames.end(), expanded.begin(), expanded.end());
        }
        std::vector<Column> columns = {{"target", 15}, {"interface", 9}, {"reachable", 9}};
        if (!allNames.empty()) {
            columns.push_back({"name", 4});
        }
        context.writer.begin("discover", std::move(columns));
        return context.options.dryRun ? showProbes(context) : search(context);
    }

private:
    static ExitCode showProbes(Context& context)
    {
        context.writer.begin("discover");
        const auto probes = Discovery::makeProbes();
        context.writer.add(resultOf(probes.first));
        context.writer.add(resultOf(probes.second));
        context.writer.end(ExitCode::ok);
        return ExitCode::ok;
    }

    ExitCode search(Context& context)
    {
        try {
            Discovery discovery(context.network, [&](const FoundCard& card) { take(context, card); });
            context.loop.run(discovery.run(static_cast<std::size_t>(std::max(expected, 0))));
            context.loop.run(findNames(context));
        } catch (const Interrupted&) {
            context.console.note("interrupted: there may be more cards");
        }
        if (!allNames.empty()) {
            for (const Result& result : found) {
                print(context, result);
            }
        }
        const ExitCode code = context.loop.wasInterrupted() ? ExitCode::interrupted : verdict(context);
        context.writer.end(code);
        return code;
    }

    // With names to look for, nothing is printed before they are known.
    void take(Context& context, const FoundCard& card)
    {
        found.push_back(resultOf(card));
        if (allNames.empty()) {
            print(context, found.back());
        }
    }

    static void print(Context& context, const Result& result)
    {
        context.writer.add(result);
        if (!result.hint.empty()) {
            context.console.note(fmt::format("{}: {}", result.target, result.hint));
        }
    }

    Task<void> findNames(Context& context)
    {
        if (allNames.empty()) {
            co_return;
        }
        for (Result& result : found) {
            result.add("name", Cell());
        }
        co_await inParallel(context.loop, allNames.size(), static_cast<std::size_t>(context.options.parallel),
                            [&](std::size_t index) { return findName(context, allNames[index]); });
    }

    Task<void> findName(Context& context, std::string name)
    {
        constexpr Patience short_{Seconds(0.6), 1};
        try {
            const CardIp card = co_await getIpConfiguration(context, name, short_);
            const auto same = [&](const Result& one) { return one.target == card.address; };
            const auto known = std::find_if(found.begin(), found.end(), same);
            if (known != found.end()) {
                known->fields.back().value = name;
            }
        } catch (const Failure&) {
            // On purpose: most names of a range are those of no card.
        }
    }

    static ExitCode tell(Context& context, const Failure& failure)
    {
        Result result;
        result.fail(failure);
        context.writer.add(result);
        context.console.error(failure.hint);
        return failure.code;
    }

    ExitCode verdict(Context& context) const
    {
        if (found.empty()) {
            return tell(context, nobody());
        }
        if (found.size() < static_cast<std::size_t>(std::max(expected, 0))) {
            return tell(context, {ExitCode::differs, "too-few", "listening",
                                  fmt::format("{} addresses were heard, {} expected", found.size(), expected)});
        }
        return ExitCode::ok;
    }

    int expected = 0;
    std::vector<std::string> names;
    std::vector<std::string> allNames;
    std::vector<Result> found;
};

} // namespace

std::unique_ptr<Command> makeDiscover()
{
    return std::make_unique<DiscoverCommand>();
}
