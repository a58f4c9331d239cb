// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Frame.h"

#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>

// Where a card's TCP service is reached.
struct Endpoint {
    std::string address; // dotted
    std::uint16_t port = cardPort;
    std::string interface = {}; // a connection leaves only there; empty: where the routes lead

    // Who is there, not how it is reached: one card heard on two interfaces from one address is one.
    bool operator==(const Endpoint& other) const { return address == other.address && port == other.port; }
};

// "10.0.0.11", or "127.0.0.1:6000" for a forwarded port; nothing if the text is no address.
[[nodiscard]] std::optional<Endpoint> parseEndpoint(std::string_view text);

// For the system's calls, in network order; and the text of an address that comes from them.
[[nodiscard]] sockaddr_in socketAddress(const Endpoint& endpoint);
[[nodiscard]] std::string dotted(const in_addr& address);
