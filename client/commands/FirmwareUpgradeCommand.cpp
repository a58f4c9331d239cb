// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/card/Queries.h"
#include "client/card/Upgrade.h"
#include "client/cli/Context.h"
#include "client/cli/LocalFile.h"
#include "client/commands/Commands.h"
#include "client/commands/ConsoleObserver.h"
#include "client/commands/FirmwareCommand.h"
#include "client/engine/Slots.h"
#include "client/plan/VersionsDiff.h"

#include <algorithm>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <map>

namespace
{

Failure unchanged(bool confirmed)
{
    constexpr const char* took = "the card took the archive, but its versions are what they were: the upgrade script "
                                 "failed, or still runs because the daemon was restarted, or these versions were "
                                 "installed already; the card's log tells which";
    constexpr const char* tookOrNot =
        "the card did not confirm the archive, and its versions are what they were: it did not upgrade, or the upgrade "
        "script failed, or still runs because the daemon was restarted, or these versions were installed already; the "
        "card's log tells which";
    return {ExitCode::verification, Category::unchanged, "comparing the versions", confirmed ? took : tookOrNot};
}

Failure notAsExpected(bool confirmed, const std::vector<Component>& unmet)
{
    std::vector<std::string> ids;
    ids.reserve(unmet.size());
    for (const Component& component : unmet) {
        ids.push_back(component.id);
    }
    return {ExitCode::verification, Category::notAsExpected, "comparing the versions",
            fmt::format("the card {}, {} has not the expected versions of {}",
                        confirmed ? "took the archive" : "did not confirm the archive", confirmed ? "but" : "and",
                        fmt::join(ids, ", "))};
}

class FirmwareUpgradeCommand final : public FirmwareCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "firmware upgrade"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        return {{"bytes"},           {"seconds"},   {"bytes_per_second"}, {"verdict"},
                {"upgrade_seconds"}, {"component"}, {"before"},           {"after"}};
    }

    void declareOwn(OptionSet& options) override
    {
        options.value("--expect", &expectFile, "FILE",
                      "what the card shall have then: a component and its version a line");
        FirmwareCommand::declareOwn(options);
        options.value("--batch", &batch, "N", "begin with N cards, and go on to the next N only if all are well")
            .minimum = 1;
    }

    void prepare(Context& context, const std::vector<Target>& targets) override
    {
        if (expectFile) {
            // First, because to look through the archive takes longer.
            expected = parseExpectedVersions(readLocalFile(*expectFile), *expectFile);
        }
        FirmwareCommand::prepare(context, targets);
    }

    [[nodiscard]] std::size_t batchSize() const override { return static_cast<std::size_t>(batch); }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint known = co_await locate(context.network, target);
        Slots& turns = turnsAt.try_emplace(known.address, context.loop, 1).first->second;
        const Slots::Held turn = co_await turns;
        co_await lookAgain(context, target);
        const Endpoint endpoint = co_await locate(context.network, target);
        // Behind the turn: what an upgrade before this one has left is what is compared.
        const Versions before = co_await queryVersions(context.network, endpoint);
        // So that a roll-out that was broken off can be started again.
        if (expectFile && unmetExpectations(before.components, expected).empty()) {
            result.add("verdict", std::string("already there"));
            result.hint = "the card has the expected versions already; nothing was sent";
            co_return;
        }
        const Delivery delivery = co_await sendArchive(context, target, endpoint, CommandId::firmwareUpgrade, result);
        if (!delivery.sent) {
            result.add("verdict", std::string("not sent"));
            co_return;
        }
        result.add("verdict", std::string("unknown")); // until the versions tell
        const TimePoint start = Clock::now();
        ConsoleObserver observer(context.console, target.label);
        const Versions afterwards =
            co_await awaitUpgrade(context.network, observer, endpoint, patience(), delivery.silence);
        const bool confirmed = !delivery.silence;
        if (confirmed) {
            result.add("upgrade_seconds", Seconds(Clock::now() - start).count());
        }
        judge(before, afterwards, confirmed, result);
        if (!confirmed) {
            result.hint = "the card did not confirm the archive in time, but has upgraded";
        }
    }

private:
    void judge(const Versions& before, const Versions& afterwards, bool confirmed, Result& result) const
    {
        result.malformed = before.malformed || afterwards.malformed;
        result.listName = "changes";
        for (const std::string& id : differingComponents({before.components, afterwards.components})) {
            const std::optional<std::string> old = versionOf(before.components, id);
            const std::optional<std::string> now = versionOf(afterwards.components, id);
            result.list.push_back(
                {{"component", id}, {"before", old ? Cell(*old) : Cell()}, {"after", now ? Cell(*now) : Cell()}});
        }
        // If not, nobody knows whether the card changed: not all that a script does has a version.
        const bool upgraded = !result.list.empty();
        if (upgraded) {
            result.changed = true;
        }
        const std::vector<Component> unmet = unmetExpectations(afterwards.components, expected);
        if (!unmet.empty()) {
            setVerdict(result, "not as expected");
            throw notAsExpected(confirmed, unmet);
        }
        setVerdict(result, upgraded ? "upgraded" : "unchanged");
        if (!upgraded) {
            throw unchanged(confirmed);
        }
    }

    static void setVerdict(Result& result, const std::string& verdict)
    {
        const auto field = std::find_if(result.fields.begin(), result.fields.end(),
                                        [](const Field& one) { return one.name == "verdict"; });
        field->value = verdict;
    }

    std::optional<std::string> expectFile;
    std::vector<Component> expected;
    std::map<std::string, Slots> turnsAt; // by address: two upgrade scripts of one card would spoil each other's work
    int batch = 0;
};

} // namespace

std::unique_ptr<Command> makeFirmwareUpgrade()
{
    return std::make_unique<FirmwareUpgradeCommand>();
}
