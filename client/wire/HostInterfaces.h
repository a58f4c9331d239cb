// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The network interfaces of this machine as they were at one look. A look asks the kernel for all of them, which takes
// long where there are many: who judges many answers looks once, and again before what changed meanwhile would matter.
class HostInterfaces
{
public:
    HostInterfaces(); // looks; a machine that tells none has none

    // Does the address belong to a network of that interface, so that it is reached without a router?
    [[nodiscard]] bool isOnLink(const std::string& interface, const std::string& address) const;
    // The same for any interface.
    [[nodiscard]] bool isOnLinkAnywhere(const std::string& address) const;

    // Is it in a network of that interface, be it one that cannot broadcast, such as the loopback device?
    [[nodiscard]] bool isInNetworkOf(const std::string& interface, const std::string& address) const;
    // The same for any interface.
    [[nodiscard]] bool isInAnyNetwork(const std::string& address) const;

    [[nodiscard]] bool isOwnAddress(const std::string& address) const;

    // The interfaces that broadcasts go to if the user names none: up, able to broadcast, with an IPv4 address.
    [[nodiscard]] std::vector<std::string> thatBroadcast() const;
    // Those that have an address and are down, so that nobody there is asked.
    [[nodiscard]] std::vector<std::string> thatAreDown() const;

private:
    // An interface has one for each of its IPv4 addresses. Numbers in network order.
    struct Entry {
        std::string name;
        bool isUp;
        bool hasBroadcast; // not so the loopback device and tunnels, behind which no card hears a broadcast
        std::uint32_t address;
        std::optional<std::uint32_t> netmask;

        [[nodiscard]] bool reaches(std::uint32_t wanted) const;
    };

    [[nodiscard]] std::vector<std::string> namesOf(bool thatAreUp) const;

    std::vector<Entry> entries;
};

// Lets a socket send and receive on that interface only, whatever the routes say; an errno, or 0.
[[nodiscard]] int bindToInterface(int socket, const std::string& interface);
