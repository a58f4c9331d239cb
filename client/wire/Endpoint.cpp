// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Endpoint.h"

#include <arpa/inet.h>
#include <array>
#include <charconv>

std::optional<Endpoint> parseEndpoint(std::string_view text)
{
    const std::size_t colon = text.find(':');
    Endpoint endpoint{std::string(text.substr(0, colon))};
    if (colon != std::string_view::npos) {
        const std::string_view port = text.substr(colon + 1);
        const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), endpoint.port);
        // Port 0 is what a socket asks for that has none.
        if (error != std::errc() || end != port.data() + port.size() || endpoint.port == 0) {
            return std::nullopt;
        }
    }
    in_addr address = {};
    if (::inet_pton(AF_INET, endpoint.address.c_str(), &address) != 1) {
        return std::nullopt;
    }
    return endpoint;
}

sockaddr_in socketAddress(const Endpoint& endpoint)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    ::inet_pton(AF_INET, endpoint.address.c_str(), &address.sin_addr);
    return address;
}

std::string dotted(const in_addr& address)
{
    std::array<char, INET_ADDRSTRLEN> text = {};
    ::inet_ntop(AF_INET, &address, text.data(), text.size());
    return text.data();
}
