// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/SocketNames.h"

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace
{

struct Option {
    int level;
    int number;
    const char* name;
};

constexpr std::array<Option, 13> options{{{SOL_SOCKET, SO_REUSEADDR, "SO_REUSEADDR"},
                                          {SOL_SOCKET, SO_BROADCAST, "SO_BROADCAST"},
                                          {SOL_SOCKET, SO_DONTROUTE, "SO_DONTROUTE"},
                                          {SOL_SOCKET, SO_KEEPALIVE, "SO_KEEPALIVE"},
                                          {SOL_SOCKET, SO_BINDTODEVICE, "SO_BINDTODEVICE"},
                                          {SOL_SOCKET, SO_RCVTIMEO, "SO_RCVTIMEO"},
                                          {SOL_SOCKET, SO_RCVBUF, "SO_RCVBUF"},
                                          {SOL_SOCKET, SO_RCVBUFFORCE, "SO_RCVBUFFORCE"},
                                          {IPPROTO_TCP, TCP_NODELAY, "TCP_NODELAY"},
                                          {IPPROTO_TCP, TCP_KEEPIDLE, "TCP_KEEPIDLE"},
                                          {IPPROTO_TCP, TCP_KEEPINTVL, "TCP_KEEPINTVL"},
                                          {IPPROTO_TCP, TCP_KEEPCNT, "TCP_KEEPCNT"},
                                          {IPPROTO_TCP, TCP_USER_TIMEOUT, "TCP_USER_TIMEOUT"}}};

std::string nameOfOption(int level, int number)
{
    for (const Option& option : options) {
        if (option.level == level && option.number == number) {
            return option.name;
        }
    }
    return std::to_string(level) + "/" + std::to_string(number);
}

} // namespace

std::string nameOfSocketType(int type)
{
    const int plain = type & ~(SOCK_CLOEXEC | SOCK_NONBLOCK);
    std::string name = plain == SOCK_STREAM ? "SOCK_STREAM" : "SOCK_DGRAM";
    if ((type & SOCK_CLOEXEC) != 0) {
        name += "|SOCK_CLOEXEC";
    }
    return name;
}

std::string describeOption(int level, int option, const void* value, socklen_t length)
{
    const std::string name = nameOfOption(level, option) + " ";
    if (level == SOL_SOCKET && option == SO_BINDTODEVICE) {
        return name + std::string(static_cast<const char*>(value), strnlen(static_cast<const char*>(value), length));
    }
    if (level == SOL_SOCKET && option == SO_RCVTIMEO && length == sizeof(timeval)) {
        timeval limit = {};
        std::memcpy(&limit, value, sizeof limit);
        return name + std::to_string(limit.tv_sec) + " s " + std::to_string(limit.tv_usec) + " us";
    }
    int number = 0;
    std::memcpy(&number, value, std::min<std::size_t>(length, sizeof number));
    return name + std::to_string(number);
}

std::string describe(const sockaddr_in& address)
{
    return std::string(inet_ntoa(address.sin_addr)) + ":" + std::to_string(ntohs(address.sin_port));
}
