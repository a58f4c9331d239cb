// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"
#include "client/wire/Frame.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct Datagram {
    Bytes bytes;
    std::string address; // of the sender, dotted
    std::uint16_t port = 0;
    std::string interface; // on which it came
};

// A datagram socket on one interface, on a port of its own choice: cards broadcast their replies to that port, and a
// socket on the cards' own port would make every card log each reply. Never connected, since a reply may come from
// any address, even one that does not fit the network.
class BroadcastSocket
{
public:
    // Throws an unreachable Failure if the interface cannot be used.
    explicit BroadcastSocket(std::string newInterface);

    // To all cards on the interface's network; false, with errno, if that is impossible.
    [[nodiscard]] bool broadcast(std::span<const std::byte> bytes) const;
    [[nodiscard]] std::optional<Datagram> receive() const; // nothing if none is there

    [[nodiscard]] int descriptor() const { return socket.get(); }
    [[nodiscard]] const std::string& interface() const { return name; }

private:
    std::string name;
    Descriptor socket;
};

// The interfaces that broadcasts go to if the user names none: up, able to broadcast, with an IPv4 address.
[[nodiscard]] std::vector<std::string> broadcastInterfaces();

// Does the address belong to a network of that interface, so that it is reached without a router?
[[nodiscard]] bool isOnLink(const std::string& interface, const std::string& address);
