// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/TcpServer.h"

#include "net/PeerDefence.h"
#include "net/SetupError.h"
#include "util/Hardened.h"
#include "util/Log.h"

#include <arpa/inet.h>

namespace
{

// In host order, as the constructors take it.
std::uint32_t parsedOrThrow(const char* text)
{
    std::uint32_t address = 0;
    if (Socket::parseAddress(text, address) == -1) {
        throw SetupError("Invalid IP address");
    }
    return ntohl(address);
}

} // namespace

TcpServer::TcpServer(std::uint16_t port) : TcpServer(port, INADDR_ANY, "") {}

TcpServer::TcpServer(std::uint16_t port, const char* addressText, const char* device)
    : TcpServer(port, parsedOrThrow(addressText), device)
{
}

TcpServer::TcpServer(std::uint16_t port, std::uint32_t localAddress, const char* device)
{
    bindTo(port, localAddress, device);
    // On purpose no backlog: one peer at a time.
    if (listen(fd, 0) == -1) {
        failSetup("listen() failed");
    }
    logInfo("Listen on port %hu was successful", port);
}

int TcpServer::accept(TcpSocket& peer)
{
    sockaddr_in client = {};
    socklen_t length = sizeof client;
    const int connection = accept4(fd, reinterpret_cast<sockaddr*>(&client), &length, SOCK_CLOEXEC);
    if (connection == -1) {
        logErrno("accept() failed");
        return -1;
    }
    logInfo("Connection from %s accepted on ports %hu/%hu", inet_ntoa(client.sin_addr), ntohs(address.sin_port),
            ntohs(client.sin_port));
    peer.adopt(connection, client);
    peer.enableKeepAlive();
    if constexpr (hardened) {
        limitStalls(connection);
    }
    return 0;
}
