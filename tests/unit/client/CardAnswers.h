// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/FakeCard.h"

#include <cstdint>
#include <string>
#include <utility>

// What card1 at 127.0.0.1 is asked, and says.

// The numbers of the commands, written down independently of the client's.
enum Number : std::uint16_t {
    versions = 1,
    ipGet = 3,
    ipSet = 4,
    upload = 7,
    upgrade = 8,
    reboot = 9,
    timeGet = 16,
    timeSet = 17,
    probe = 0x7FF0, // a command that no card knows
};

constexpr std::uint8_t refused = 2;
inline const FakeCard::Answer done{};
inline const FakeCard::Answer refusal{.status = refused};
inline const FakeCard::Answer hangUp{.hangsUp = true}; // to a datagram: nothing

inline FakeCard::Answer says(std::string text)
{
    return {.text = std::move(text)};
}

inline std::string versionsXml(const std::string& kernel)
{
    return "<Versions>\n\t<Component Id=\"kernel\" Version=\"" + kernel + "\"/>\n</Versions>";
}

inline std::string interfaceXml(const std::string& name, const std::string& address)
{
    return "<Interface Name=\"" + name + "\" Mode=\"Static\" Address=\"" + address + "\" Netmask=\"255.0.0.0\"/>";
}

// The answer of card1, with whatever VemkEth1 has. It comes from 127.0.0.1.
inline std::string ipXmlWith(const std::string& interface)
{
    return R"(<IpConfiguration From="card1" To="tarvelctl">)" + interface + interfaceXml("VemkEth2", "10.0.1.11") +
           "</IpConfiguration>";
}

inline std::string ipXml(const std::string& address)
{
    return ipXmlWith(interfaceXml("VemkEth1", address));
}

inline std::string timeXml(const std::string& mode, const std::string& server, const std::string& time)
{
    return "<TimeReferenceConfiguration Mode=\"" + mode + "\" NtpServer=\"" + server + "\" DateTime=\"" + time + "\"/>";
}
