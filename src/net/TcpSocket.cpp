// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/TcpSocket.h"

#include "net/PeerDefence.h"
#include "net/SetupError.h"
#include "util/Hardened.h"
#include "util/Log.h"

#include <cerrno>

#include <netinet/tcp.h>

TcpSocket::TcpSocket()
{
    fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd == -1) {
        failSetup("Creating stream socket failed");
    }
    logInfo("Stream socket (%d) successfully created", fd);
}

int TcpSocket::receive(void* buffer, int length, int flags)
{
    if (length < 1) {
        return 0;
    }
    auto* start = static_cast<std::byte*>(buffer);
    int received = 0;
    while (received < length) {
        const ssize_t n = recv(fd, start + received, static_cast<std::size_t>(length - received), flags);
        if (n == 0) {
            logInfo("Client closed the connection");
            return 0;
        }
        if constexpr (hardened) {
            if (n < 0 && errno == EAGAIN) {
                giveUpStalled(fd);
                return -1;
            }
        }
        if (n < 0) {
            logErrno("recv() failed");
            return -1;
        }
        received += static_cast<int>(n);
    }
    return received;
}

int TcpSocket::send(const void* buffer, int length, int flags)
{
    if (length < 1) {
        return 0;
    }
    const auto* start = static_cast<const std::byte*>(buffer);
    int sent = 0;
    while (sent < length) {
        const ssize_t n = ::send(fd, start + sent, static_cast<std::size_t>(length - sent), flags);
        if (n == -1 && errno == EPIPE) {
            logInfo("Client closed the connection");
            return 0;
        }
        if (n == -1) {
            logErrno("send() failed");
            return -1;
        }
        sent += static_cast<int>(n);
    }
    return sent;
}

void TcpSocket::enableKeepAlive()
{
    // Chosen, not measured. The connection is the card's only one: the kernel's two hours would be a card locked out.
    // A minute of silence is usual between two requests of a person, and then costs one small segment each way; three
    // probes in half a minute outlast a cable that is plugged from one port into another.
    constexpr int idleSeconds = 60;
    constexpr int intervalSeconds = 10;
    constexpr int probes = 3;
    // Probes wait until what was sent is acknowledged, and retransmissions go on for a quarter of an hour. As long as
    // silence and probes together, so that a client that vanished costs the same, whatever it was doing.
    constexpr int unacknowledgedMilliseconds = 90'000;
    setOption(SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(IPPROTO_TCP, TCP_KEEPIDLE, idleSeconds);
    setOption(IPPROTO_TCP, TCP_KEEPINTVL, intervalSeconds);
    setOption(IPPROTO_TCP, TCP_KEEPCNT, probes);
    setOption(IPPROTO_TCP, TCP_USER_TIMEOUT, unacknowledgedMilliseconds);
}
