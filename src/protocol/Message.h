// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/MessageHeader.h"

#include <cstdint>
#include <span>
#include <string_view>

// One payload section of a message to be sent: its length in bytes and its data, which the caller owns.
struct Section {
    std::uint32_t count = 0;
    void* data = nullptr;
};

// A message to be sent over TCP: a header in host order and the sections in the order in which they travel.
struct Message {
    MessageHeader header = {};
    Section section64;
    Section section32;
    Section section16;
    Section section8;

    // Copies `text` with its terminating NUL into `buffer`, cut to what fits, and makes that the 8-bit section.
    // Returns the payload length to put into the header. `buffer` must outlive the message.
    [[nodiscard]] std::uint32_t setText(std::span<char> buffer, std::string_view text);
};

// Converts the elements and byte counts of the sections that the header announces from host to wire order, in
// place. Counts needed for sending must be read before.
void swapSections(Message& message);
