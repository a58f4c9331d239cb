// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/card/IpChange.h"
#include "client/card/IpMemory.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/commands/AddressCare.h"
#include "client/commands/Commands.h"
#include "client/commands/ConsoleObserver.h"
#include "client/commands/FormerSettings.h"
#include "client/commands/IpOptions.h"
#include "client/commands/TargetCommand.h"
#include "client/model/CalendarTime.h"
#include "client/plan/IpPlan.h"
#include "client/wire/HostInterfaces.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

Failure needsForce(const std::string& card, const std::string& address)
{
    return {ExitCode::usage, Category::needsForce, lookingForCard,
            fmt::format("{0} answers, and {1} is an address that works here; nothing was sent, `tarvelctl ip set` "
                        "changes it with a way back, --force sends the settings all the same",
                        card, address)};
}

// An address that this machine has no way to is none that works.
std::optional<std::string> workingAddress(const Target& target)
{
    const bool works = target.heard && HostInterfaces().isOnLink(target.heard->interface, target.heard->address);
    return works ? std::optional(target.heard->address) : std::nullopt;
}

// What the card told, if it was heard and told it.
std::optional<IpConfiguration> toldBy(const Target& target)
{
    try {
        return target.heard ? std::optional(ipConfigurationIn(*target.heard)) : std::nullopt;
    } catch (const Failure&) {
        return std::nullopt;
    }
}

std::optional<InterfaceConfig> settingsOf(const std::optional<IpConfiguration>& now, const std::string& interface)
{
    const InterfaceConfig* const found = now ? now->find(interface) : nullptr;
    return found == nullptr ? std::nullopt : std::optional(*found);
}

std::string presentSettings(const Target& target, const std::optional<IpConfiguration>& now,
                            const std::string& interface)
{
    const std::optional<InterfaceConfig> found = settingsOf(now, interface);
    if (found) {
        return describe(*found);
    }
    return target.heard ? "unknown" : "not heard";
}

Failure notRescued(const std::string& card, const std::optional<InterfaceConfig>& seen)
{
    if (seen) {
        return {ExitCode::verification, Category::notRescued, "waiting for the card",
                fmt::format("{} answers, but has {}", card, describe(*seen))};
    }
    return {ExitCode::noAnswer, Category::timeout, "waiting for the card",
            fmt::format("{} does not answer by this name on any of the interfaces used: it is down, has another name, "
                        "hangs on another network, or the reverse path filter here drops what comes from its address",
                        card)};
}

// Broadcasts a configuration to a card that nothing else reaches: a broadcast is heard whatever the address is.
class IpRescueCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "ip rescue"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        return list ? std::vector<Column>{{"number"}, {"interface"}, {"settings"}, {"time"}, {"age"}}
                    : std::vector<Column>{{"interface"}, {"now"}, {"reachable"},     {"wanted"},
                                          {"time"},      {"age"}, {"address_state"}, {"state"}};
    }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }
    [[nodiscard]] bool changesCards() const override { return !list; }
    [[nodiscard]] bool looksUpNames() const override { return false; }
    [[nodiscard]] Way way() const override { return Way::byNameUnheard; }

    void declareOwn(OptionSet& options) override
    {
        ipOptions.declare(options);
        options.flag("--list", list, "show the former settings that are known, and ask no card");
        options.value("--to", &number, "N", "the former settings with this number in the list (1, the newest)")
            .minimum = 1;
    }

    void prepare(Context& /*context*/, const std::vector<Target>& targets) override
    {
        if (ipOptions.given()) {
            given = ipOptions.interfaceConfig();
        }
        if (given && (list || number != 0)) {
            throw usageFailure("--list and --to are about former settings: give no others with them");
        }
        if (given && given->mode == IpMode::fixed && targets.size() > 1) {
            throw usageFailure("one static address cannot be that of several cards");
        }
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        if (list) {
            listFormerSettings(target.name, result);
            co_return;
        }
        const RememberedIp wanted = given ? RememberedIp{*given, {}} : formerSettings(target.name, std::max(number, 1));
        const std::optional<IpConfiguration> now = toldBy(target);
        announce(context, target, wanted, now, result);
        refuseHealthy(context, target); // behind the announcement, which shows what it is about
        co_await lookAtAddress(context, target.name, wanted.settings, now, result);
        co_await lookAgain(context, target);
        refuseHealthy(context, target);
        ConsoleObserver observer(context.console, target.label);
        IpChange change(context.network, observer, target.name);
        co_await change.lookBefore(wanted.settings, settingsOf(now, wanted.settings.name));
        result.changed = std::nullopt; // until the card is heard
        const auto settle = [&] { result.changed = change.isSent() ? result.changed : false; };
        try {
            const Proof proof = co_await change.force(wanted.settings, Seconds(ipOptions.wait));
            report(proof, change, target.name, wanted.settings.name, result);
        } catch (const Failure& failure) {
            settle();
            throw change.explain(failure);
        } catch (...) {
            settle();
            throw;
        }
    }

private:
    static void announce(Context& context, const Target& target, const RememberedIp& wanted,
                         const std::optional<IpConfiguration>& told, Result& result)
    {
        const InterfaceConfig& settings = wanted.settings;
        const std::string now = presentSettings(target, told, settings.name);
        result.add("interface", settings.name);
        result.add("now", now);
        result.add("reachable", workingAddress(target).has_value());
        result.add("wanted", describe(settings));
        result.add("time", timeCell(wanted));
        result.add("age", ageCell(wanted));
        const std::string since = wanted.time ? fmt::format(", as {} ago", ageText(secondsNow() - *wanted.time)) : "";
        context.console.note(fmt::format("{}: {}", target.label, settings.name));
        context.console.note(fmt::format("  now:    {}", now));
        context.console.note(fmt::format("  wanted: {}{}", describe(settings), since));
    }

    // A card that works would be moved without a way back.
    static void refuseHealthy(Context& context, const Target& target)
    {
        const std::optional<std::string> address = workingAddress(target);
        if (address && !context.options.force && !context.options.dryRun) {
            throw needsForce(target.name, *address);
        }
    }

    static void report(Proof proof, const IpChange& change, const std::string& card, const std::string& interface,
                       Result& result)
    {
        if (proof == Proof::none) {
            result.add("state", "lost");
            throw notRescued(card, change.lastSeen());
        }
        result.changed = true;
        result.add("state", proof == Proof::applied ? "rescued" : "stored");
        if (proof == Proof::stored) {
            result.hint = onlyStored(interface);
        }
    }

    IpOptions ipOptions;
    bool list = false;
    int number = 0; // none
    std::optional<InterfaceConfig> given;
};

} // namespace

std::unique_ptr<Command> makeIpRescue()
{
    return std::make_unique<IpRescueCommand>();
}
