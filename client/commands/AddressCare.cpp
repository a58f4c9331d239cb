// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/AddressCare.h"

#include "client/card/AddressCheck.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/model/Contains.h"
#include "client/output/Console.h"

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

// Nothing if there is none.
std::string otherWith(const std::string& address, const std::optional<IpConfiguration>& card, const std::string& name)
{
    for (const InterfaceConfig& interface : card ? card->interfaces : std::vector<InterfaceConfig>()) {
        if (interface.name != name && contains(addressesOf(interface), address)) {
            return interface.name;
        }
    }
    return "";
}

Task<AddressFinding> lookAt(Context& context, std::string card, InterfaceConfig wanted,
                            std::optional<IpConfiguration> now)
{
    // Before anybody is asked: who answers there would be the card itself.
    const std::string other = otherWith(*wanted.address, now, wanted.name);
    if (!other.empty()) {
        co_return AddressFinding{"in use", fmt::format("{} is the address of {}", *wanted.address, other)};
    }
    const std::vector<std::string> present = presentAddresses(now, wanted.name);
    const AddressCheck check(context.network, !context.options.noProbe);
    AddressFinding finding = co_await check.look(std::move(card), *wanted.address, present);
    co_return finding;
}

} // namespace

// A card that gets another host's address is lost with it, and what is meant for the one reaches the other.
Task<void> lookAtAddress(Context& context, std::string card, InterfaceConfig wanted, std::optional<IpConfiguration> now,
                         Result& result)
{
    if (!wanted.address) {
        co_return;
    }
    const AddressFinding finding = co_await lookAt(context, std::move(card), wanted, std::move(now));
    // Before anything is thrown, so that the data says what was seen.
    result.add("address_state", finding.state);
    if (finding.objection.empty()) {
        co_return;
    }
    if (!context.options.force && !context.options.dryRun) {
        throw needsForce(finding.objection);
    }
    context.console.warning(finding.objection);
}
