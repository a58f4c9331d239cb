// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpChange.h"
#include "client/card/IpMemory.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/commands/AddressCare.h"
#include "client/commands/Agreement.h"
#include "client/commands/Commands.h"
#include "client/commands/ConsoleObserver.h"
#include "client/commands/IpOptions.h"
#include "client/commands/TargetCommand.h"
#include "client/model/CalendarTime.h"
#include "client/plan/IpPlan.h"

#include <fmt/core.h>
#include <fmt/ranges.h>
#include <optional>
#include <string>
#include <vector>

namespace
{

Failure needsYes(const std::string& why)
{
    return {ExitCode::usage, Category::needsYes, "planning the change",
            fmt::format("the change could not be rolled back, because {}; --yes does it all the same", why)};
}

Failure changedMeanwhile(const std::string& card)
{
    return {ExitCode::usage, Category::needsYes, "planning the change",
            fmt::format("the settings of {} have changed while you were asked; nothing was sent", card)};
}

// None if the card refused to tell.
std::vector<InterfaceConfig> settingsIn(const std::optional<IpConfiguration>& told)
{
    return told ? told->interfaces : std::vector<InterfaceConfig>();
}

Failure rolledBack(const std::string& card)
{
    return {ExitCode::verification, Category::rolledBack, "waiting for the card with its new configuration",
            fmt::format("{} did not come back with the new configuration in time; it has the former one again", card)};
}

Failure rollbackStored(const std::string& card, const std::string& interface)
{
    return {
        ExitCode::verification, Category::rolledBack, "waiting for the card with its new configuration",
        fmt::format("{} did not come back with the new configuration in time; only its settings were seen to be the "
                    "former ones again, whether {} works cannot be seen from here",
                    card, interface)};
}

Failure lost(const std::string& card, const std::string& why)
{
    return {ExitCode::verification, Category::lost, "rolling the change back",
            fmt::format("{0} did not come back with the new configuration, and did not take the former one either{1}; "
                        "try `tarvelctl ip rescue {0}`",
                        card, why.empty() ? why : fmt::format(" ({})", why))};
}

Failure lostForGood(const std::string& card, const std::string& noRollback)
{
    return {ExitCode::verification, Category::lost, "waiting for the card with its new configuration",
            fmt::format("{0} did not come back with the new configuration in time, and cannot be given the former one, "
                        "because {1}; `tarvelctl ip rescue {0} --if ...` gives it another",
                        card, noRollback)};
}

Failure interruptedWhileWaiting(const std::string& card)
{
    return {ExitCode::interrupted, Category::interrupted, "waiting for the card with its new configuration",
            fmt::format("the change was sent, and {0} may have either configuration; `tarvelctl ip get {0}` tells, "
                        "`tarvelctl ip rescue {0}` brings the former one back",
                        card)};
}

class IpSetCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "ip set"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        return {{"interface"}, {"now"}, {"wanted"}, {"effect"}, {"address_state"}, {"state"}};
    }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }
    [[nodiscard]] bool changesCards() const override { return true; }
    void declareOwn(OptionSet& options) override { ipOptions.declare(options); }

    void prepare(Context& /*context*/, const std::vector<Target>& targets) override
    {
        wanted = ipOptions.interfaceConfig();
        isAlone = targets.size() == 1;
        if (wanted.mode == IpMode::fixed && !isAlone) {
            throw usageFailure("one static address cannot be that of several cards");
        }
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        ConsoleObserver observer(context.console, target.label);
        IpChange change(context.network, observer, target.name);
        // Not what it told when it was looked up, which is old by now if people had to agree first.
        const std::optional<IpConfiguration> now = co_await change.readNow();
        const IpPlan plan = planIp(now, wanted);
        show(context, target, plan, result);
        if (plan.nothingToDo()) {
            result.add("state", "as wanted");
            result.hint = "the card has this configuration already";
            co_return;
        }
        if (agree(context, plan)) {
            co_await lookBehindQuestion(context, target, change, now);
        }
        co_await lookAtAddress(context, target.name, wanted, now, result);
        co_await lookAgain(context, target); // to look may take ten seconds
        // Before it is sent: whoever is interrupted right behind that needs it.
        if (plan.rollback && !context.options.dryRun && !rememberIp(target.name, *plan.rollback, secondsNow())) {
            context.console.warning("the present configuration cannot be remembered for `ip rescue`");
        }
        result.changed = std::nullopt; // until the card is heard
        try {
            const IpOutcome outcome = co_await change.run(plan, Seconds(ipOptions.wait));
            report(outcome, change, target.name, plan, result);
        } catch (const Interrupted&) {
            if (!change.isSent()) { // nothing is left to find out, as otherwise it would be
                result.changed = false;
                throw;
            }
            result.add("state", "unknown");
            throw interruptedWhileWaiting(target.name);
        } catch (const Failure& failure) {
            if (!change.isSent()) {
                result.changed = false;
            }
            throw change.explain(failure);
        }
    }

private:
    static void show(Context& context, const Target& target, const IpPlan& plan, Result& result)
    {
        const std::string now = plan.now ? describe(*plan.now) : "unknown";
        const std::string effect = plan.nothingToDo() ? "none" : fmt::format("{}", fmt::join(plan.effects, "; "));
        result.add("interface", plan.wanted.name);
        result.add("now", now);
        result.add("wanted", describe(plan.wanted));
        result.add("effect", effect);
        context.console.note(fmt::format("{}: {}", target.label, plan.wanted.name));
        context.console.note(fmt::format("  now:    {}", now));
        context.console.note(fmt::format("  wanted: {}", describe(plan.wanted)));
        context.console.note(fmt::format("  effect: {}", effect));
    }

    // Whether a person was asked. One question at a time, and none while other cards are being waited for.
    bool agree(Context& context, const IpPlan& plan) const
    {
        if (plan.noRollback.empty()) {
            return false;
        }
        context.console.warning(fmt::format("this cannot be rolled back: {}", plan.noRollback));
        if (context.options.yes || context.options.dryRun) {
            return false;
        }
        if (!isAlone || !context.console.canAsk() || !agrees(context, "Change it all the same?")) {
            throw needsYes(plan.noRollback);
        }
        return true;
    }

    // A person may have taken any time to answer, and has agreed to a change of these settings.
    Task<void> lookBehindQuestion(Context& context, const Target& target, IpChange& change,
                                  const std::optional<IpConfiguration>& shown)
    {
        co_await lookAgain(context, target);
        const std::optional<IpConfiguration> now = co_await change.readNow();
        if (settingsIn(now) != settingsIn(shown)) {
            throw changedMeanwhile(target.name);
        }
    }

    static void report(IpOutcome outcome, const IpChange& change, const std::string& card, const IpPlan& plan,
                       Result& result)
    {
        switch (outcome) {
        case IpOutcome::applied:
            result.changed = true;
            result.add("state", "applied");
            return;
        case IpOutcome::stored:
            result.changed = true;
            result.add("state", "stored");
            result.hint = onlyStored(plan.wanted.name);
            return;
        case IpOutcome::rolledBack:
            result.changed = std::nullopt; // what others staged was committed along, and cannot be seen from here
            result.add("state", "rolled back");
            throw rolledBack(card);
        case IpOutcome::rollbackStored:
            result.add("state", "rollback stored");
            throw rollbackStored(card, plan.wanted.name);
        case IpOutcome::lost:
            result.add("state", "lost");
            throw plan.rollback ? lost(card, change.rollbackRefusal()) : lostForGood(card, plan.noRollback);
        }
    }

    IpOptions ipOptions;
    InterfaceConfig wanted;
    bool isAlone = true;
};

} // namespace

std::unique_ptr<Command> makeIpSet()
{
    return std::make_unique<IpSetCommand>();
}
