// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/UdpSocket.h"

#include "net/SetupError.h"
#include "util/Log.h"

UdpSocket::UdpSocket()
{
    fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd == -1) {
        failSetup("Creating datagram socket failed");
    }
    logInfo("Datagram socket (%d) successfully created", fd);
}

int UdpSocket::setBroadcast(int value)
{
    return setOption(SOL_SOCKET, SO_BROADCAST, value);
}

int UdpSocket::receiveFrom(void* buffer, std::size_t length, sockaddr_in* sender, int flags)
{
    socklen_t addressLength = sizeof *sender;
    const ssize_t n = recvfrom(fd, buffer, length, flags, reinterpret_cast<sockaddr*>(sender), &addressLength);
    if (n == -1) {
        logErrno("recvfrom() failed");
    }
    return static_cast<int>(n);
}

int UdpSocket::sendTo(const void* buffer, std::size_t length, const sockaddr_in* destination, int flags)
{
    const ssize_t n =
        sendto(fd, buffer, length, flags, reinterpret_cast<const sockaddr*>(destination), sizeof *destination);
    if (n == -1) {
        logErrno("sendto() failed");
    } else if (static_cast<std::size_t>(n) < length) {
        logWarning("Datagram has been truncated by sendto()");
    }
    return static_cast<int>(n);
}
