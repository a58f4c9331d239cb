// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// IPv4 addresses as numbers of this machine, for calculating with networks. Only four decimal numbers with dots are an
// address here; the card understands more forms, which nobody should need.
using Ipv4 = std::uint32_t;

[[nodiscard]] std::optional<Ipv4> parseIpv4(std::string_view text);
[[nodiscard]] std::string formatIpv4(Ipv4 address);

[[nodiscard]] std::optional<int> prefixLengthIn(std::string_view text); // a number, however large
[[nodiscard]] std::optional<Ipv4> maskOfPrefix(int length);             // 0 to 32
[[nodiscard]] bool isMask(Ipv4 mask);                                   // ones, then zeros
[[nodiscard]] bool isHostAddress(Ipv4 address);                         // not 0.x, 127.x, multicast or above
