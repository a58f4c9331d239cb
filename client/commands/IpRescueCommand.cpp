// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/IpChange.h"
#include "client/commands/IpMemory.h"
#include "client/commands/IpWish.h"
#include "client/commands/TargetCommand.h"
#include "client/output/Console.h"
#include "client/plan/IpPlan.h"

#include <fmt/core.h>

namespace
{

Failure nothingRemembered(const std::string& card)
{
    return usageFailure(fmt::format("no change of {} was made from here; say with --if and --static, --dhcp or "
                                    "--disabled what it shall have",
                                    card));
}

Failure notRescued(const std::string& card, const std::optional<InterfaceConfig>& seen)
{
    if (seen) {
        return {ExitCode::verification, "not-rescued", "waiting for the card",
                fmt::format("{} answers, but has {}", card, describe(*seen))};
    }
    return {ExitCode::noAnswer, "timeout", "waiting for the card",
            fmt::format("{} does not answer by this name on any of the interfaces used: it is down, has another name, "
                        "hangs on another network, or the reverse path filter here drops what comes from its address",
                        card)};
}

// Broadcasts a configuration to a card that nothing else reaches: a broadcast is heard whatever the address is.
class IpRescueCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "ip rescue"; }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }
    [[nodiscard]] bool changesCards() const override { return true; }
    void declareOwn(OptionSet& options) override { wish.declare(options); }

    void prepare(Context& /*context*/, const std::vector<Target>& targets) override
    {
        if (wish.given()) {
            given = wish.interfaceConfig();
        }
        if (given && given->mode == IpMode::fixed && targets.size() > 1) {
            throw usageFailure("one static address cannot be that of several cards");
        }
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const std::optional<InterfaceConfig> wanted = given ? given : rememberedIp(target.name);
        if (!wanted) {
            throw nothingRemembered(target.name);
        }
        result.add("interface", wanted->name);
        result.add("wanted", describe(*wanted));
        context.console.note(fmt::format("{}: sending {} {}", target.label, wanted->name, describe(*wanted)));
        std::optional<InterfaceConfig> seen;
        const Proof proof = co_await forceIpConfiguration(context, target.name, *wanted, Seconds(wish.wait), seen);
        result.add("state", proof != Proof::none ? "rescued" : "lost");
        if (proof == Proof::none) {
            throw notRescued(target.name, seen);
        }
    }

private:
    IpWish wish;
    std::optional<InterfaceConfig> given;
};

} // namespace

std::unique_ptr<Command> makeIpRescue()
{
    return std::make_unique<IpRescueCommand>();
}
