// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/card/Queries.h"
#include "client/cli/Context.h"
#include "client/cli/Document.h"
#include "client/cli/Version.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"
#include "client/commands/TimeReport.h"
#include "client/commands/VersionsReport.h"
#include "client/model/CalendarTime.h"
#include "client/report/FleetPage.h"

#include <fmt/core.h>
#include <map>

namespace
{

// Where a name was heard last, as it is told of one that is silent now.
std::string lastSeenOf(const Result& result)
{
    std::string text;
    for (const Field& field : result.fields) {
        const std::string* const value = field.isOwn ? std::get_if<std::string>(&field.value) : nullptr;
        if (value != nullptr && !value->empty()) {
            text += (text.empty() ? "" : ", ") + *value;
        }
    }
    return text;
}

// Looks at all that cards tell of themselves, and writes it on one page.
class ReportCommand final : public TargetCommand
{
public:
    [[nodiscard]] DocumentOption* document() override { return &place; }

    [[nodiscard]] std::string documentOf(const std::vector<Result>& results) override
    {
        std::vector<FleetCard> cards;
        cards.reserve(results.size());
        for (const Result& result : results) {
            cards.push_back(cardOf(result));
        }
        return fleetPage({began, secondsNow(), std::string(programVersion())}, Fleet(std::move(cards), doubts));
    }

protected:
    [[nodiscard]] std::string_view name() const override { return "report"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        std::vector<Column> all = timeColumns();
        for (const char* more : {"asked_at", "heard_from", "eth1", "eth2", "component", "version"}) {
            all.emplace_back(more);
        }
        return all;
    }
    [[nodiscard]] bool asksNotedNames() const override { return true; }
    // It was asked at the one address, and may have been heard from another.
    [[nodiscard]] bool tellsWhereFrom() const override { return false; }

    void declareOwn(OptionSet& options) override { place.declare(options); }

    void takeDoubt(const std::string& doubt) override { doubts.push_back(doubt); }

    void prepare(Context& /*context*/, const std::vector<Target>& /*targets*/) override { began = secondsNow(); }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        FleetCard& card = seen[target.label];
        card.isAskedByName = !target.isAddress();
        noteSettings(target, card, result);
        const Endpoint endpoint = co_await locate(context.network, target);
        card.address = endpoint.address;
        result.add("asked_at", endpoint.address);
        co_await askVersions(context.network, endpoint, card, result);
        co_await askTime(context.network, endpoint, card, result);
        if (!card.failures.empty()) {
            throw Failure(card.failures.front());
        }
    }

private:
    // A card that cannot tell one thing may tell the others.
    static void noteSettings(const Target& target, FleetCard& card, Result& result)
    {
        if (!target.heard) {
            return;
        }
        card.heardFrom = target.heard->address;
        result.add("heard_from", card.heardFrom);
        try {
            card.settings = ipConfigurationIn(*target.heard);
        } catch (const Failure& failure) {
            card.failures.push_back(failure);
            return;
        }
        result.malformed = card.settings->malformed;
        for (const auto& [interface, field] : {std::pair("VemkEth1", "eth1"), std::pair("VemkEth2", "eth2")}) {
            if (const InterfaceConfig* const found = card.settings->find(interface)) {
                result.add(field, found->address.value_or(std::string(wordOf(found->mode))));
            }
        }
    }

    // Who is not there, or says nothing in time, is not asked twice.
    static Task<void> askVersions(Network& network, Endpoint endpoint, FleetCard& card, Result& result)
    {
        try {
            const Versions versions = co_await queryVersions(network, std::move(endpoint));
            card.components = versions.components;
            report(versions, result);
        } catch (const Failure& failure) {
            if (failure.code != ExitCode::refusedByCard && failure.code != ExitCode::protocol) {
                throw;
            }
            card.failures.push_back(failure);
        }
    }

    static Task<void> askTime(Network& network, Endpoint endpoint, FleetCard& card, Result& result)
    {
        try {
            const TimeReading reading = co_await queryTime(network, std::move(endpoint));
            const TimeReference& reference = reading.reference;
            const std::string server = reference.mode == TimeMode::ntp ? " " + reference.server : "";
            card.clock =
                FleetCard::Clock{reading.skew, reading.skewError, fmt::format("{}{}", wordOf(reference.mode), server)};
            report(reading, result);
        } catch (const Failure& failure) {
            card.failures.push_back(failure);
        }
    }

    [[nodiscard]] FleetCard cardOf(const Result& result) const
    {
        const auto found = seen.find(result.target); // none of a name that nobody answered to
        FleetCard card = found == seen.end() ? FleetCard() : found->second;
        card.label = result.target;
        card.lastSeen = lastSeenOf(result);
        if (found == seen.end()) {
            card.isAskedByName = true;
        }
        if (!result.ok() && (card.failures.empty() || card.failures.front().hint != result.hint)) {
            card.failures.push_back({result.code, result.category, result.phase, result.hint});
        }
        return card;
    }

    DocumentOption place;
    std::int64_t began = 0;
    std::map<std::string, FleetCard> seen; // by target
    std::vector<std::string> doubts;
};

} // namespace

std::unique_ptr<Command> makeReport()
{
    return std::make_unique<ReportCommand>();
}
