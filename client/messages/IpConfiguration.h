// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class IpMode { fixed, dhcp, disabled };

[[nodiscard]] std::string_view wordOf(IpMode mode); // as in XML: "Static", "Dhcp", "Disabled"
[[nodiscard]] std::optional<IpMode> ipModeOf(std::string_view word);

// The configuration of one interface of a card. Addresses only in fixed mode, where a card may lack the last two.
struct InterfaceConfig {
    std::string name; // "VemkEth1" or "VemkEth2"
    IpMode mode = IpMode::disabled;
    std::optional<std::string> address;
    std::optional<std::string> netmask;
    std::optional<std::string> gateway;

    bool operator==(const InterfaceConfig&) const = default;
};

// The addresses of an interface, which may be several with their prefixes, without these.
[[nodiscard]] std::vector<std::string> addressesOf(const InterfaceConfig& interface);

// What a card reports of its interfaces.
struct IpConfiguration {
    std::string from; // the card's name
    std::string to;
    std::vector<InterfaceConfig> interfaces; // VemkEth1, VemkEth2
    bool malformed = false;                  // was read by the fixed grammar, as it is no XML

    [[nodiscard]] const InterfaceConfig* find(std::string_view name) const;
};

// Throws a protocol Failure if the text is not even nearly an IP configuration of both interfaces.
[[nodiscard]] IpConfiguration parseIpConfiguration(const std::string& text);

// The texts of requests to the card of that name, without a NUL; what XML has a meaning for is escaped.
[[nodiscard]] std::string ipConfigGetXml(std::string_view card);
// Empty elements without whitespace between them: the card takes whitespace after the first for an error.
[[nodiscard]] std::string ipConfigSetXml(std::string_view card, const std::vector<InterfaceConfig>& interfaces);
[[nodiscard]] std::string rebootXml(std::string_view card);
