// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/ReceiveBuffer.h"

#include <array>
#include <fmt/core.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>

namespace
{

// What the kernel says of it: twice what was asked for, half of which is for its administration.
bool isLargeEnough(int socket)
{
    int size = 0;
    socklen_t length = sizeof size;
    return ::getsockopt(socket, SOL_SOCKET, SO_RCVBUF, &size, &length) == 0 && size / 2 >= receiveBuffer;
}

// Counted by the kernel from the opening on, so that also what was thrown away behind the last one read is told. An
// emulator may hand on no more than the first number of the list.
std::uint32_t lostBy(int socket)
{
    std::array<std::uint32_t, SK_MEMINFO_VARS> numbers = {};
    socklen_t length = sizeof numbers;
    const bool isTold = ::getsockopt(socket, SOL_SOCKET, SO_MEMINFO, numbers.data(), &length) == 0 &&
                        length > SK_MEMINFO_DROPS * sizeof numbers.front();
    return isTold ? std::get<SK_MEMINFO_DROPS>(numbers) : 0;
}

} // namespace

void enlargeReceiveBuffer(int socket)
{
    if (isLargeEnough(socket)) {
        return; // the machine's default: it must not become smaller
    }
    // The first is for the privileged only, the second is cut to what is allowed; without either, the default serves.
    if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &receiveBuffer, sizeof receiveBuffer) == -1) {
        ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
}

void LostDatagrams::add(int socket)
{
    const std::uint32_t lost = lostBy(socket);
    number += lost;
    wasLimited = wasLimited || (lost > 0 && !isLargeEnough(socket));
}

std::optional<std::string> LostDatagrams::describe() const
{
    if (number == 0) {
        return std::nullopt;
    }
    const std::string remedy =
        wasLimited ? fmt::format("; with net.core.rmem_max={} this machine keeps more of them", receiveBuffer) : "";
    return fmt::format("{} {} lost because a receive buffer was full: some cards may be missing{}", number,
                       number == 1 ? "datagram was" : "datagrams were", remedy);
}
