// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/WireOrder.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

// The header's words as a little-endian host lays them out, which is also their order on the wire.
struct LittleEndianHeader {
    std::uint32_t startPattern; // always the value below in what is sent, not looked at in what is received
    std::uint8_t version;
    std::uint8_t messageFormat; // the section bits below
    std::uint8_t device;        // number of the addressed device
    std::uint8_t service;       // number of the addressed service
    std::uint16_t commandId;    // bit 15 marks a reply
    std::uint8_t status;        // see Status; not looked at in requests
    std::uint8_t commandVersion;
    std::uint32_t sequenceId;    // chosen by the requester, echoed in the reply
    std::uint32_t payloadLength; // bytes that follow the header: all sections with their counts
};

// The same words as a big-endian host lays them out: within a word the fields stand in reverse.
struct BigEndianHeader {
    std::uint32_t startPattern;
    std::uint8_t service;
    std::uint8_t device;
    std::uint8_t messageFormat;
    std::uint8_t version;
    std::uint8_t commandVersion;
    std::uint8_t status;
    std::uint16_t commandId;
    std::uint32_t sequenceId;
    std::uint32_t payloadLength;
};

// The 20 bytes in front of every message, held in host order. Five 32-bit words make the conversion to wire order
// a plain byte reversal of each word on the big-endian card.
using MessageHeader = std::conditional_t<hostIsBigEndian, BigEndianHeader, LittleEndianHeader>;

inline constexpr std::size_t headerSize = 20;
static_assert(sizeof(LittleEndianHeader) == headerSize && sizeof(BigEndianHeader) == headerSize);
static_assert(offsetof(LittleEndianHeader, version) == 4 && offsetof(BigEndianHeader, service) == 4);
static_assert(offsetof(LittleEndianHeader, service) == 7 && offsetof(BigEndianHeader, version) == 7);
static_assert(offsetof(LittleEndianHeader, commandId) == 8 && offsetof(BigEndianHeader, commandVersion) == 8);
static_assert(offsetof(LittleEndianHeader, commandVersion) == 11 && offsetof(BigEndianHeader, commandId) == 10);
static_assert(offsetof(LittleEndianHeader, sequenceId) == 12 && offsetof(BigEndianHeader, sequenceId) == 12);
static_assert(offsetof(LittleEndianHeader, payloadLength) == 16 && offsetof(BigEndianHeader, payloadLength) == 16);

inline constexpr std::uint32_t headerStartPattern = 0xFF9AC381;
inline constexpr std::uint8_t protocolVersion = 1;
inline constexpr std::uint8_t currentCommandVersion = 1;
inline constexpr std::uint16_t replyFlag = 0x8000;   // in commandId
inline constexpr std::uint32_t sectionCountSize = 4; // bytes in front of each section

// Bits of messageFormat, one for each payload section that is present.
inline constexpr std::uint8_t section8Bit = 0x01; // bytes: every XML text travels here
inline constexpr std::uint8_t section16Bit = 0x02;
inline constexpr std::uint8_t section32Bit = 0x04;
inline constexpr std::uint8_t section64Bit = 0x08;
inline constexpr std::uint8_t sectionMask = 0x1F;     // what "only an 8-bit section" is judged by
inline constexpr std::uint8_t rawSectionsFlag = 0x80; // sections are left as received; never sent
inline constexpr std::uint8_t replyFormatMask = 0x9F; // what a reply's format may hold

enum class Status : std::uint8_t {
    success = 1,
    failure = 2,
    wrongVersion = 3,
    wrongDevice = 4,
    wrongService = 5,
    unknownCommand = 6,
};

// Converts the header between host and wire order in place; twice gives the header back.
void swapHeaderWords(MessageHeader& header);

// Writes a header in host order to standard output, ten labelled lines, flushed.
void dumpHeader(const MessageHeader& header);
