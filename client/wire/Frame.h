// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Failure.h"
#include "protocol/Commands.h"
#include "protocol/MessageHeader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<std::byte>;

// What a card announces beyond this is garbage: no reply of a card has more than 4096 bytes, and what a stranger
// announces must not fill this machine's memory.
inline constexpr std::uint32_t longestReplyPayload = 65536;

// A request as it is meant; encode() makes the bytes of it.
struct Request {
    MessageHeader header = {};  // host order, complete but for payloadLength
    Bytes payload;              // the sections with their counts, as they travel
    std::string xml;            // the text inside, for people
    std::uint64_t streamed = 0; // bytes of the payload that are sent behind it, because memory should not hold them
};

// A request that may be repeated, and sent in a dry run. What is not known to change nothing changes a card.
[[nodiscard]] bool changesNothing(const Request& request);

// Each request gets a random sequence number of its own.
[[nodiscard]] Request bareRequest(CommandId command);
// With a text as its one section; `xml` is without the NUL that ends it on the wire.
[[nodiscard]] Request textRequest(CommandId command, std::string xml);
[[nodiscard]] Bytes textSection(std::string_view text); // count, text, NUL
[[nodiscard]] Bytes encode(const Request& request);     // one piece, for one segment or one datagram

struct Reply {
    MessageHeader header = {}; // host order
    Bytes payload;             // as it travelled
};

// The header of what came, in host order; any bytes make one.
[[nodiscard]] MessageHeader decodeHeader(std::span<const std::byte, headerSize> bytes);

// Is this the answer to that request, by command, reply flag and sequence number?
[[nodiscard]] bool answers(const MessageHeader& reply, const Request& request);

// Throw a protocol Failure for what no card sends: another start pattern, version or numbers, lengths that contradict
// each other.
void checkReplyHeader(const MessageHeader& reply, const Request& request);
[[nodiscard]] std::string textOf(const Reply& reply); // of a reply with one 8-bit section

// Nothing for status 1, else throws what the card's status means.
void checkStatus(const MessageHeader& reply);
