// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/GlobalOptions.h"
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/IpChange.h"
#include "client/commands/IpMemory.h"
#include "client/commands/IpWish.h"
#include "client/commands/TargetCommand.h"
#include "client/output/Console.h"
#include "client/plan/IpPlan.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

Failure needsYes(const std::string& why)
{
    return {ExitCode::usage, "needs-yes", "planning the change",
            fmt::format("the change could not be rolled back, because {}; --yes does it all the same", why)};
}

Failure rolledBack(const std::string& card)
{
    return {ExitCode::verification, "rolled-back", "waiting for the card with its new configuration",
            fmt::format("{} did not come back with the new configuration in time; it has the former one again", card)};
}

Failure lost(const std::string& card, const std::string& why)
{
    return {ExitCode::verification, "lost", "rolling the change back",
            fmt::format("{0} did not come back with the new configuration, and did not take the former one either{1}; "
                        "try `tarvelctl ip rescue {0}`",
                        card, why.empty() ? why : fmt::format(" ({})", why))};
}

Failure lostForGood(const std::string& card, const std::string& noWayBack)
{
    return {ExitCode::verification, "lost", "waiting for the card with its new configuration",
            fmt::format("{0} did not come back with the new configuration in time, and cannot be given the former one, "
                        "because {1}; `tarvelctl ip rescue {0} --if ...` gives it another",
                        card, noWayBack)};
}

Failure interruptedWhileWaiting(const std::string& card)
{
    return {ExitCode::interrupted, "interrupted", "waiting for the card with its new configuration",
            fmt::format("the change was sent, and {0} may have either configuration; `tarvelctl ip get {0}` tells, "
                        "`tarvelctl ip rescue {0}` brings the former one back",
                        card)};
}

class IpSetCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "ip set"; }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }
    [[nodiscard]] bool changesCards() const override { return true; }
    void declareOwn(OptionSet& options) override { wish.declare(options); }

    void prepare(Context& /*context*/, const std::vector<Target>& targets) override
    {
        wanted = wish.interfaceConfig();
        isAlone = targets.size() == 1;
        if (wanted.mode == IpMode::fixed && !isAlone) {
            throw usageFailure("one static address cannot be that of several cards");
        }
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        std::string onlyInterface;
        const std::optional<IpConfiguration> now = co_await readNow(context, target.name, onlyInterface);
        const IpPlan plan = planIp(now, wanted);
        show(context, target, plan, result);
        if (plan.nothingToDo()) {
            throw nothingToDo("the card has this configuration already");
        }
        agree(context, plan);
        if (plan.wayBack && !context.options.dryRun && !rememberIp(target.name, *plan.wayBack)) {
            context.console.warning("the present configuration cannot be remembered for `ip rescue`");
        }
        co_await seeThrough(context, target, plan, onlyInterface, result);
    }

private:
    // Nothing if the card refuses to tell, which must not keep it from being set.
    static Task<std::optional<IpConfiguration>> readNow(Context& context, std::string card, std::string& onlyInterface)
    {
        const CardReply answer = co_await hearCard(context, std::move(card), {});
        onlyInterface = answer.interface;
        if (answer.reply.header.status == static_cast<std::uint8_t>(Status::failure)) {
            co_return std::nullopt;
        }
        co_return ipConfigurationIn(answer);
    }

    static void show(Context& context, const Target& target, const IpPlan& plan, Result& result)
    {
        const std::string now = plan.now ? describe(*plan.now) : "unknown";
        const std::string effect = plan.nothingToDo() ? "none" : fmt::format("{}", fmt::join(plan.effects, "; "));
        result.add("interface", plan.wanted.name);
        result.add("now", now);
        result.add("wanted", describe(plan.wanted));
        result.add("effect", effect);
        context.console.note(fmt::format("{}: {}\n  now:    {}\n  wanted: {}\n  effect: {}", target.label,
                                         plan.wanted.name, now, describe(plan.wanted), effect));
    }

    // One question at a time, and none while other cards are being waited for.
    void agree(Context& context, const IpPlan& plan) const
    {
        if (plan.noWayBack.empty()) {
            return;
        }
        context.console.warning(fmt::format("this cannot be rolled back: {}", plan.noWayBack));
        if (context.options.yes || context.options.dryRun) {
            return;
        }
        if (!isAlone || !context.console.canAsk() || !context.console.confirm("Change it all the same?")) {
            throw needsYes(plan.noWayBack);
        }
    }

    Task<void> seeThrough(Context& context, const Target& target, const IpPlan& plan, const std::string& onlyInterface,
                          Result& result)
    {
        bool interrupted = false;
        try {
            const bool confirmed = co_await sendIpConfiguration(context, target.name, wanted, onlyInterface);
            if (!confirmed) {
                context.console.note(fmt::format("{}: no answer to the change; looking for its effect", target.label));
            }
            co_await awaitOrRollBack(context, target, plan, result);
        } catch (const Interrupted&) {
            interrupted = true;
        }
        if (interrupted) {
            result.add("state", "unknown");
            throw interruptedWhileWaiting(target.name);
        }
    }

    Task<void> awaitOrRollBack(Context& context, const Target& target, const IpPlan& plan, Result& result)
    {
        const Seconds time(wish.wait);
        std::optional<InterfaceConfig> seen;
        const Proof proof = co_await awaitIpConfiguration(context, target.name, wanted, after(time), seen);
        if (proof != Proof::none) {
            result.add("state", proof == Proof::applied ? "applied" : "stored");
            if (proof == Proof::stored) {
                result.hint = fmt::format("only the card's other interface was heard: its settings are as wanted, but "
                                          "whether {} works cannot be seen from here",
                                          wanted.name);
            }
            co_return;
        }
        if (!plan.wayBack) {
            result.add("state", "lost");
            throw lostForGood(target.name, plan.noWayBack);
        }
        context.console.warning(fmt::format("{}: not back with the new configuration; rolling back", target.label));
        Proof back = Proof::none;
        std::string refusal;
        try {
            back = co_await forceIpConfiguration(context, target.name, *plan.wayBack, time, seen);
        } catch (const Failure& failure) {
            refusal = failure.hint;
        }
        result.add("state", back != Proof::none ? "rolled back" : "lost");
        throw back != Proof::none ? rolledBack(target.name) : lost(target.name, refusal);
    }

    IpWish wish;
    InterfaceConfig wanted;
    bool isAlone = true;
};

} // namespace

std::unique_ptr<Command> makeIpSet()
{
    return std::make_unique<IpSetCommand>();
}
