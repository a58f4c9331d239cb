// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"
#include "client/wire/Frame.h"
#include "client/wire/Wire.h"

#include <cstdint>
#include <memory>
#include <optional>
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
    // Throws a Failure: unreachable if there is no such interface, internal if this machine gives no socket for it. The
    // wire outlives the socket, but for its end.
    BroadcastSocket(const Wire& newWire, std::string newInterface);
    BroadcastSocket(BroadcastSocket&&) = default;
    BroadcastSocket& operator=(BroadcastSocket&&) = delete;
    ~BroadcastSocket(); // adds what it lost to what the wire tells

    // To all cards on the interface's network; false, with errno, if that is impossible. Throws NotSent for a request
    // that must not leave.
    [[nodiscard]] bool broadcast(const Request& request) const;
    [[nodiscard]] std::optional<Datagram> receive() const; // nothing if none is there

    [[nodiscard]] int descriptor() const { return socket.get(); }
    [[nodiscard]] const std::string& interface() const { return name; }

private:
    const Wire* wire;
    std::shared_ptr<LostDatagrams> lost;
    std::string name;
    Descriptor socket;
};
