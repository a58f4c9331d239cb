// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <string_view>

// The numbers by which a card is addressed, and what people call the commands; the same for the daemon and its client.

inline constexpr std::uint16_t cardPort = 50003; // on TCP and UDP alike
inline constexpr std::uint8_t cardDevice = 5;
inline constexpr std::uint8_t cardService = 4;

enum class CommandId : std::uint16_t {
    versions = 1,          // TCP
    ipConfigGet = 3,       // UDP
    ipConfigSet = 4,       // UDP
    firmwareUpload = 7,    // TCP: only unpacks
    firmwareUpgrade = 8,   // TCP: runs the upgrade script, too
    reboot = 9,            // UDP
    timeReferenceGet = 16, // TCP
    timeReferenceSet = 17, // TCP
};

constexpr std::string_view nameOf(CommandId command)
{
    switch (command) {
    case CommandId::versions:
        return "versions report";
    case CommandId::ipConfigGet:
        return "IP configuration get";
    case CommandId::ipConfigSet:
        return "IP configuration set";
    case CommandId::firmwareUpload:
        return "firmware upload";
    case CommandId::firmwareUpgrade:
        return "firmware upgrade";
    case CommandId::reboot:
        return "card reboot";
    case CommandId::timeReferenceGet:
        return "time reference get";
    case CommandId::timeReferenceSet:
        return "time reference set";
    }
    return "unknown command";
}
