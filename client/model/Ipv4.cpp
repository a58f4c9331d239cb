// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Ipv4.h"

#include <arpa/inet.h>
#include <array>
#include <charconv>

std::optional<Ipv4> parseIpv4(std::string_view text)
{
    in_addr address = {};
    if (::inet_pton(AF_INET, std::string(text).c_str(), &address) != 1) {
        return std::nullopt;
    }
    return ntohl(address.s_addr);
}

std::string formatIpv4(Ipv4 address)
{
    in_addr network = {};
    network.s_addr = htonl(address);
    std::array<char, INET_ADDRSTRLEN> text = {};
    ::inet_ntop(AF_INET, &network, text.data(), text.size());
    return text.data();
}

std::optional<int> prefixLengthIn(std::string_view text)
{
    int length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(length) : std::nullopt;
}

std::optional<Ipv4> maskOfPrefix(int length)
{
    if (length < 0 || length > 32) {
        return std::nullopt;
    }
    return length == 0 ? 0 : ~Ipv4{0} << (32 - length); // to shift by all 32 bits is undefined
}

bool isMask(Ipv4 mask)
{
    const Ipv4 zeros = ~mask;
    // Ones at the end alone have nothing in common with the next number.
    return (zeros & (zeros + 1)) == 0;
}

bool isHostAddress(Ipv4 address)
{
    const Ipv4 first = address >> 24;
    return first != 0 && first != 127 && first < 224;
}
