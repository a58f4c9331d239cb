// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/Prefix.h"

#include "client/model/Failure.h"
#include "client/wire/Endpoint.h"

#include <arpa/inet.h>
#include <charconv>
#include <fmt/core.h>

namespace
{

constexpr unsigned shortest = 22; // what is wider takes minutes to go through, and is a slip more often than a wish
constexpr unsigned longest = 30;

std::optional<unsigned> numberIn(std::string_view text)
{
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::string dottedOf(std::uint32_t address)
{
    return dotted(in_addr{htonl(address)});
}

} // namespace

std::optional<std::vector<std::string>> hostsOf(std::string_view text)
{
    const std::size_t slash = text.find('/');
    in_addr address = {};
    if (slash == std::string_view::npos ||
        ::inet_pton(AF_INET, std::string(text.substr(0, slash)).c_str(), &address) != 1) {
        return std::nullopt;
    }
    const std::optional<unsigned> length = numberIn(text.substr(slash + 1));
    if (!length) {
        return std::nullopt;
    }
    if (*length < shortest || *length > longest) {
        throw usageFailure(fmt::format("\"{}\": a prefix is from /{} to /{}", text, shortest, longest));
    }
    const std::uint32_t hostBits = (1U << (32 - *length)) - 1;
    const std::uint32_t network = ntohl(address.s_addr) & ~hostBits;
    std::vector<std::string> hosts;
    for (std::uint32_t host = 1; host < hostBits; ++host) {
        hosts.push_back(dottedOf(network + host));
    }
    return hosts;
}
