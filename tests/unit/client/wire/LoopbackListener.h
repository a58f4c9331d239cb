// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"
#include "client/wire/Endpoint.h"

#include <array>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

// A port on the loopback device, as a card would listen on its own.
class LoopbackListener
{
public:
    LoopbackListener() : listener(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = socketAddress({"127.0.0.1", 0});
        socklen_t size = sizeof address;
        ::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), size);
        ::listen(listener.get(), 4);
        ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size);
        port = ntohs(address.sin_port);
    }

    [[nodiscard]] Endpoint endpoint() const { return {"127.0.0.1", port}; }
    [[nodiscard]] int descriptor() const { return listener.get(); }
    // The connection that waits, if one does.
    [[nodiscard]] Descriptor accept() const { return Descriptor(::accept(listener.get(), nullptr, nullptr)); }
    [[nodiscard]] bool wasContacted() const { return accept().get() != -1; }
    // From now on connections to the port are refused.
    void close() { listener.reset(); }
    // From now on they wait: nobody accepts those that are made here, and there is no room for more.
    void fillQueue()
    {
        const sockaddr_in address = socketAddress(endpoint());
        ::listen(listener.get(), 0);
        for (Descriptor& one : waiting) {
            one = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            ::connect(one.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
        }
    }

private:
    Descriptor listener;
    std::array<Descriptor, 4> waiting;
    std::uint16_t port = 0;
};
