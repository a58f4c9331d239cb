// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

// What the kernel keeps of what came to a datagram socket until it is read, and what it throws away.

// The kernel charges a datagram with all the memory that it lies in, and a driver may give each one a page. It sets
// twice this aside: a thousand answers of a page each. Eight interfaces are 32 MiB at worst, while nobody reads.
inline constexpr int receiveBuffer = 2 * 1024 * 1024;

// The most that may wait in one of that size: with its administration, the smallest one lies in more than 512 bytes.
inline constexpr std::size_t mostDatagramsWaiting = 2 * static_cast<std::size_t>(receiveBuffer) / 512;

// Makes the buffer that large, or as large as net.core.rmem_max allows without privilege, or leaves it as it is.
void enlargeReceiveBuffer(int socket);

// What was thrown away because the buffers of sockets were full.
class LostDatagrams
{
public:
    // What one socket lost since it was opened: to be called once for each, before it is closed. A kernel that does not
    // tell counts as one that lost nothing.
    void add(int socket);

    [[nodiscard]] std::uint64_t count() const { return number; }

    // A sentence for people; nothing if none was lost.
    [[nodiscard]] std::optional<std::string> describe() const;

private:
    std::uint64_t number = 0;
    bool wasLimited = false; // a buffer was smaller than wanted
};
