// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/Socket.h"

#include "net/SetupError.h"
#include "util/Log.h"

#include <cstring>

#include <arpa/inet.h>
#include <unistd.h>

Socket::~Socket()
{
    close();
}

void Socket::adopt(int descriptor, const sockaddr_in& itsAddress)
{
    fd = descriptor;
    address = itsAddress;
}

void Socket::close()
{
    if (fd == -1) {
        return;
    }
    if (::close(fd) == -1) {
        logErrno("Failed to close socket (%d)", fd);
        return; // whether it is still open nobody knows, so it stays noted
    }
    logInfo("Socket (%d) successfully closed", fd);
    fd = -1;
}

int Socket::setOption(int level, int option, int value)
{
    return setsockopt(fd, level, option, &value, sizeof value);
}

int Socket::setReuseAddress(int value)
{
    return setOption(SOL_SOCKET, SO_REUSEADDR, value);
}

int Socket::setDontRoute(int value)
{
    return setOption(SOL_SOCKET, SO_DONTROUTE, value);
}

int Socket::bind()
{
    return ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

int Socket::bindToDevice(const char* name)
{
    const auto lengthWithNul = static_cast<socklen_t>(std::strlen(name) + 1);
    return setsockopt(fd, SOL_SOCKET, SO_BINDTODEVICE, name, lengthWithNul);
}

int Socket::parseAddress(const char* text, std::uint32_t& out)
{
    in_addr parsed = {};
    if (inet_aton(text, &parsed) == 0) {
        logWarning("Invalid IP address (%s)", text);
        return -1;
    }
    out = parsed.s_addr;
    return 0;
}

void Socket::bindTo(std::uint16_t port, std::uint32_t localAddress, const char* device)
{
    // The UDP sockets share a port until each is bound to its device, and a daemon that starts again finds the
    // connections of the one before still lingering.
    if (setReuseAddress(1) == -1) {
        failSetup("Setting server socket option failed");
    }
    logInfo("Server socket options successfully set");

    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(localAddress);
    if (bind() == -1) {
        failSetup("Bind() failed");
    }
    logInfo("Bind() was successful");

    if (*device == '\0') {
        return;
    }
    if (bindToDevice(device) == -1) {
        failSetup("BindToDevice() failed");
    }
    logInfo("BindToDevice (%s) was successful", device);
}
