// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/FleetCard.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Cards of a report, and what is looked for in it.

inline FleetCard cardWith(std::vector<Component> components)
{
    FleetCard card;
    card.components = std::move(components);
    return card;
}

inline InterfaceConfig fixed(const std::string& name, const std::string& address)
{
    return {name, IpMode::fixed, address, "255.255.255.0", "10.0.0.254"};
}

inline InterfaceConfig leased(const std::string& name)
{
    return {name, IpMode::dhcp, {}, {}, {}};
}

inline FleetCard cardOf(const std::string& label, std::vector<InterfaceConfig> interfaces, const std::string& heardFrom)
{
    FleetCard card;
    card.label = label;
    card.isAskedByName = true;
    card.heardFrom = heardFrom;
    card.settings.emplace();
    card.settings->interfaces = std::move(interfaces);
    return card;
}

inline FleetCard cardNamed(const std::string& label, const std::string& kernel, double skew)
{
    FleetCard card;
    card.label = label;
    card.address = "10.0.0." + label.substr(label.size() - 1);
    card.components.emplace(1, Component{"kernel", kernel});
    card.clock = FleetCard::Clock{skew, 0.5, "Manual"};
    return card;
}

inline FleetCard silentCard(const std::string& label)
{
    FleetCard card;
    card.label = label;
    card.failures = {{ExitCode::noAnswer, Category::timeout, "connecting", label + " does not answer"}};
    return card;
}

inline bool has(const std::string& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

inline std::size_t countOf(const std::string& text, std::string_view part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}
