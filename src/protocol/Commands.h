// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <string_view>

// The numbers by which a card is addressed, what people call the commands, and what these leave behind; the same for
// the daemon and its client.

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

// What a request leaves on the card. One that only reads may be repeated, and sent in a dry run.
enum class Effect : std::uint8_t { reads, changes };

struct CommandFacts {
    std::string_view name;
    Effect effect;
};

constexpr CommandFacts factsOf(CommandId command)
{
    switch (command) {
    case CommandId::versions:
        return {"versions report", Effect::reads};
    case CommandId::ipConfigGet:
        return {"IP configuration get", Effect::reads};
    case CommandId::ipConfigSet:
        return {"IP configuration set", Effect::changes};
    case CommandId::firmwareUpload:
        return {"firmware upload", Effect::changes};
    case CommandId::firmwareUpgrade:
        return {"firmware upgrade", Effect::changes};
    case CommandId::reboot:
        return {"card reboot", Effect::changes};
    case CommandId::timeReferenceGet:
        return {"time reference get", Effect::reads};
    case CommandId::timeReferenceSet:
        return {"time reference set", Effect::changes};
    }
    // A number of tomorrow: taken for a change, which is the careful mistake.
    return {"unknown command", Effect::changes};
}

constexpr std::string_view nameOf(CommandId command)
{
    return factsOf(command).name;
}
