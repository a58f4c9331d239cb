// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <vector>

// The network interfaces of this machine.

// The interfaces that broadcasts go to if the user names none: up, able to broadcast, with an IPv4 address.
[[nodiscard]] std::vector<std::string> broadcastInterfaces();
// Those that have an address and are down, so that nobody there is asked.
[[nodiscard]] std::vector<std::string> interfacesThatAreDown();

// Does the address belong to a network of that interface, so that it is reached without a router?
[[nodiscard]] bool isOnLink(const std::string& interface, const std::string& address);
// The same for any interface of this machine.
[[nodiscard]] bool isOnLinkAnywhere(const std::string& address);

// Is it in a network of that interface, be it one that cannot broadcast, such as the loopback device?
[[nodiscard]] bool isInNetworkOf(const std::string& interface, const std::string& address);
// The same for any interface of this machine.
[[nodiscard]] bool isInAnyNetwork(const std::string& address);

[[nodiscard]] bool isOwnAddress(const std::string& address);

// Lets a socket send and receive on that interface only, whatever the routes say; an errno, or 0.
[[nodiscard]] int bindToInterface(int socket, const std::string& interface);
