// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

// Documents of the IP configuration set command, and the commands that each of them leads to.

inline const std::string firstProto = "network.lanvemt2eth1.proto";
inline const std::string secondProto = "network.lanvemt2eth2.proto";

inline const std::vector<std::string> stageFirst = {
    "uci -q set network.lanvemt2eth1.proto=static", "uci -q set network.lanvemt2eth1.ipaddr=192.168.1.10",
    "uci -q set network.lanvemt2eth1.netmask=255.255.255.0", "uci -q set network.lanvemt2eth1.gateway=192.168.1.1"};
inline const std::vector<std::string> stageSecond = {
    "uci -q set network.lanvemt2eth2.proto=dhcp", "uci -q delete network.lanvemt2eth2.ipaddr",
    "uci -q delete network.lanvemt2eth2.netmask", "uci -q delete network.lanvemt2eth2.gateway"};
inline const std::vector<std::string> readBack = {"uci -q changes ",
                                                  "uci -q get network.lanvemt2eth1.proto > /tmp/uci.tmp",
                                                  "uci -q get network.lanvemt2eth2.proto > /tmp/uci.tmp"};
inline const std::vector<std::string> commit = {"uci -q commit "};
inline const std::vector<std::string> revert = {"uci -q revert network"};
inline const std::vector<std::string> restart = {"/etc/init.d/network restart"};

inline const std::string one = "<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"192.168.1.10\" "
                               "Netmask=\"255.255.255.0\" Gateway=\"192.168.1.1\"/>";
inline const std::string two = "<Interface Name=\"VemkEth2\" Mode=\"Dhcp\"/>";

inline std::string configuration(const std::string& content)
{
    return "<IpConfiguration From=\"mgmt\" To=\"card7\">" + content + "</IpConfiguration>";
}

inline std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> parts)
{
    std::vector<std::string> all;
    for (const auto& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}
