// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/AddressCare.h"

#include "client/card/AddressCheck.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/output/Console.h"

#include <algorithm>
#include <fmt/core.h>
#include <string>
#include <vector>

namespace
{

Failure needsForce(const std::string& why)
{
    return {ExitCode::usage, Category::needsForce, "looking at the address",
            fmt::format("{}; nothing was sent, --force does it all the same", why)};
}

std::vector<std::string> presentAddresses(const std::optional<IpConfiguration>& card, const std::string& name)
{
    const InterfaceConfig* const interface = card ? card->find(name) : nullptr;
    return interface != nullptr ? addressesOf(*interface) : std::vector<std::string>();
}

bool hasAddress(const std::optional<IpConfiguration>& card, const std::string& address)
{
    return card && std::ranges::any_of(card->interfaces, [&](const InterfaceConfig& interface) {
               const std::vector<std::string> addresses = addressesOf(interface);
               return std::ranges::find(addresses, address) != addresses.end();
           });
}

} // namespace

// A card that gets another host's address is lost with it, and what is meant for the one reaches the other.
Task<void> lookAtAddress(Context& context, InterfaceConfig wanted, std::optional<IpConfiguration> now, Result& result)
{
    if (!wanted.address) {
        co_return;
    }
    const AddressCheck check(context.network, !context.options.noProbe);
    const AddressFinding finding =
        co_await check.look(*wanted.address, presentAddresses(now, wanted.name), hasAddress(now, *wanted.address));
    result.add("address_state", finding.state);
    if (finding.objection.empty()) {
        co_return;
    }
    if (!context.options.force && !context.options.dryRun) {
        throw needsForce(finding.objection);
    }
    context.console.warning(finding.objection);
}
