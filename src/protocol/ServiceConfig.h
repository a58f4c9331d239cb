// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>

// What a service is opened with; it keeps a copy. The TCP service reads only the port and the two numbers.
struct ServiceConfig {
    std::uint16_t port;         // to listen on, 0 lets the kernel choose
    std::uint8_t deviceNumber;  // the device the service answers for
    std::uint8_t serviceNumber; // the number of the service itself
    std::uint8_t bindDevice;    // non-zero: bind to the network device named below
    const char* deviceName;     // may be null; must outlive the service
    std::uint8_t broadcast;     // non-zero: a datagram socket may send broadcasts
};
