// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Leases.h"

#include <algorithm>

namespace
{

std::ptrdiff_t dhcpInterfaces(const CardIp& answer)
{
    return std::ranges::count(answer.configuration.interfaces, IpMode::dhcp, &InterfaceConfig::mode);
}

bool states(const InterfaceConfig& interface, const std::string& address)
{
    const std::vector<std::string> addresses = addressesOf(interface);
    return std::ranges::find(addresses, address) != addresses.end();
}

} // namespace

bool isSentAsStated(const CardIp& answer)
{
    return std::ranges::any_of(answer.configuration.interfaces,
                               [&](const InterfaceConfig& one) { return states(one, answer.address); });
}

void Leases::hear(int question, const CardIp& answer)
{
    if (!isSentAsStated(answer)) {
        senders[question].insert(answer.address);
    }
}

bool Leases::areTooMany(int question, const CardIp& answer) const
{
    const auto found = senders.find(question);
    // More than can be: one of them is the former address of an interface whose network has not followed.
    return found != senders.end() && std::ssize(found->second) > dhcpInterfaces(answer);
}

bool Leases::areAll(int question, const CardIp& answer, const std::vector<std::string>& besides) const
{
    const auto found = senders.find(question);
    if (found == senders.end()) {
        return false;
    }
    const auto counts = [&](const std::string& sender) { return std::ranges::find(besides, sender) == besides.end(); };
    return std::ranges::count_if(found->second, counts) >= dhcpInterfaces(answer);
}
