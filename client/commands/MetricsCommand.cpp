// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Context.h"
#include "client/cli/Document.h"
#include "client/commands/CardMetrics.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"
#include "client/commands/TimeReport.h"
#include "client/commands/VersionsReport.h"
#include "client/model/CalendarTime.h"
#include "client/output/Console.h"

#include <algorithm>
#include <fmt/core.h>
#include <iterator>
#include <map>

namespace
{

// As it stands in the groups file, however it was told: who moves a card to another address keeps its history.
std::string cardOf(const Target& target)
{
    return target.name.empty() ? target.label : target.name;
}

// A monitor asks again and again: a name that is looked for would be a broadcast to all cards each time.
Endpoint notedEndpoint(const Target& target)
{
    if (!target.endpoint) {
        throw Failure{ExitCode::unreachable, Category::noAddress, "looking for its address",
                      fmt::format("the groups file has no address of it, and metrics sends no broadcast to find it; "
                                  "write this line there: {} ADDRESS",
                                  target.name)};
    }
    return *target.endpoint;
}

double secondsSince(TimePoint start)
{
    return Seconds(Clock::now() - start).count();
}

class MetricsCommand final : public TargetCommand
{
public:
    [[nodiscard]] DocumentOption* document() override { return &place; }
    [[nodiscard]] std::string documentOf(const std::vector<Result>& results) override
    {
        std::vector<CardMetrics> all;
        all.reserve(results.size());
        for (const Result& result : results) {
            all.push_back(cards.at(result.target));
            all.back().failure = wordOf(result.category);
        }
        return metricsText(all, {secondsSince(begin), exactSecondsNow()});
    }

protected:
    [[nodiscard]] std::string_view name() const override { return "metrics"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        std::vector<Column> all = {{"card"}, {"address"}, {"component"}, {"version"}, {"seconds"}};
        std::ranges::move(timeColumns(), std::back_inserter(all));
        return all;
    }
    void declareOwn(OptionSet& options) override { place.declare(options); }

    [[nodiscard]] bool looksUpNames() const override { return false; }
    [[nodiscard]] bool namesMatter() const override { return true; }

    [[nodiscard]] std::vector<Target> meant(const Context& context, std::vector<Target> targets) const override
    {
        std::map<std::string, std::string> labels; // by card
        std::erase_if(targets, [&](const Target& target) {
            const auto [first, isNew] = labels.emplace(cardOf(target), target.label);
            if (!isNew) {
                context.console.warning(fmt::format("{} is {}: one card, asked once", target.label, first->second));
            }
            return !isNew;
        });
        return targets;
    }

    void prepare(Context& /*context*/, const std::vector<Target>& targets) override
    {
        begin = Clock::now();
        for (const Target& target : targets) {
            cards[target.label].card = cardOf(target);
        }
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        CardMetrics& metrics = cards.at(target.label);
        result.add("card", metrics.card);
        const Endpoint endpoint = notedEndpoint(target);
        metrics.address = endpoint.address;
        result.add("address", endpoint.address);
        const TimePoint start = Clock::now();
        metrics.versions = co_await queryVersions(context.network, endpoint);
        metrics.seconds = secondsSince(start);
        report(*metrics.versions, result);
        metrics.reading = co_await queryTime(context.network, endpoint);
        metrics.seconds = secondsSince(start);
        result.add("seconds", metrics.seconds);
        report(*metrics.reading, result);
    }

private:
    DocumentOption place;
    TimePoint begin;
    std::map<std::string, CardMetrics> cards; // by target
};

} // namespace

std::unique_ptr<Command> makeMetrics()
{
    return std::make_unique<MetricsCommand>();
}
