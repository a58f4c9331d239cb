// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <array>
#include <string_view>

// An external interface of the card under its three names: in the log, in XML, and in the persistent settings.
struct IpInterface {
    std::string_view identifier;
    std::string_view xmlName;
    std::string_view uciSection;
};

inline constexpr std::array<IpInterface, 2> ipInterfaces = {{
    {"vemEth1", "VemkEth1", "network.lanvemt2eth1"},
    {"vemEth2", "VemkEth2", "network.lanvemt2eth2"},
}};

// How an interface gets its address: in XML and as the interface's protocol in the persistent settings.
struct IpMode {
    std::string_view xmlName;
    std::string_view proto;
};

inline constexpr IpMode staticMode = {"Static", "static"};
inline constexpr IpMode dhcpMode = {"Dhcp", "dhcp"};
inline constexpr IpMode disabledMode = {"Disabled", "none"};
