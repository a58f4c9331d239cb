// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/Prefix.h"

#include "client/model/Failure.h"
#include "client/model/Ipv4.h"

#include <fmt/core.h>

namespace
{

constexpr int shortest = 22; // what is wider takes minutes to go through, and is a slip more often than a wish
constexpr int longest = 30;

} // namespace

std::optional<std::vector<std::string>> hostsOf(std::string_view text)
{
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) {
        return std::nullopt;
    }
    const std::optional<Ipv4> address = parseIpv4(text.substr(0, slash));
    const std::optional<int> length = prefixLengthIn(text.substr(slash + 1));
    if (!address || !length) {
        return std::nullopt;
    }
    if (*length < shortest || *length > longest) {
        throw usageFailure(fmt::format("\"{}\": a prefix is from /{} to /{}", text, shortest, longest));
    }
    const Ipv4 mask = *maskOfPrefix(*length);
    std::vector<std::string> hosts;
    for (Ipv4 host = 1; host < ~mask; ++host) {
        hosts.push_back(formatIpv4((*address & mask) + host));
    }
    return hosts;
}
