// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/IpOptions.h"

#include "client/model/Failure.h"
#include "client/plan/IpPlan.h"

#include <fmt/core.h>

void IpOptions::declare(OptionSet& options)
{
    OptionSpec& name = options.value("--if", &interface, "INTERFACE", "the card's interface: VemkEth1 or VemkEth2");
    name.choices = {"VemkEth1", "VemkEth2"};
    options.value("--static", &fixed, "A/M[,GW]", "a static address with netmask and perhaps gateway");
    options.flag("--dhcp", dhcp, "an address by DHCP");
    options.flag("--disabled", disabled, "no address");
    options.value("--wait", &wait, "SECONDS", "how long the card may take to be back (30)");
}

InterfaceConfig IpOptions::interfaceConfig() const
{
    requireInterfaceName(interface);
    if (modesGiven() != 1) {
        throw usageFailure("give one of --static, --dhcp and --disabled");
    }
    if (fixed) {
        return parseStatic(interface, *fixed);
    }
    return {interface, dhcp ? IpMode::dhcp : IpMode::disabled, std::nullopt, std::nullopt, std::nullopt};
}

std::string onlyStored(const std::string& interface)
{
    return fmt::format("the card's settings are as wanted, but whether {} works cannot be seen from here", interface);
}
