// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// Sockets: the real call on the loopback device. What is sent to any other address is delivered to the same port on
// the loopback address, so that a test can receive a broadcast and no test can send one; a connection likewise.

#include "support/LossyKernel.h"
#include "support/PortMapping.h"
#include "support/Replaced.h"
#include "support/SocketNames.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <linux/sock_diag.h>
#include <sys/socket.h>

namespace
{

const PortMapping* mapping = nullptr;
const LossyKernel* lossy = nullptr;

sockaddr_in onLoopback(const sockaddr_in& address)
{
    sockaddr_in local = address;
    if ((ntohl(address.sin_addr.s_addr) >> 24) != 127) {
        local.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }
    local.sin_port = htons(PortMapping::actualOf(ntohs(address.sin_port)));
    return local;
}

const sockaddr_in& inet(const sockaddr* address)
{
    return *reinterpret_cast<const sockaddr_in*>(address); // the system has no other family
}

int tellLosses(void* value, socklen_t& length)
{
    std::array<std::uint32_t, SK_MEMINFO_VARS> numbers = {};
    numbers.at(SK_MEMINFO_DROPS) = lossy->lost;
    length = std::min(length, static_cast<socklen_t>(lossy->told * sizeof numbers.front()));
    std::memcpy(value, numbers.data(), length);
    return 0;
}

ssize_t receive(int descriptor, void* buffer, size_t size, int flags)
{
    return replacedMoving("recv", std::to_string(size), ssize_t{-1}, size,
                          [&](size_t bytes) { return ::recv(descriptor, buffer, bytes, flags); });
}

ssize_t receiveFrom(int descriptor, void* buffer, size_t size, int flags, sockaddr* from, socklen_t* length)
{
    return replacedMoving("recvfrom", std::to_string(size), ssize_t{-1}, size, [&](size_t bytes) {
        const ssize_t received = ::recvfrom(descriptor, buffer, bytes, flags, from, length);
        if (received != -1 && from != nullptr && from->sa_family == AF_INET) {
            auto& sender = *reinterpret_cast<sockaddr_in*>(from);
            sender.sin_port = htons(PortMapping::knownOf(ntohs(sender.sin_port)));
        }
        return received;
    });
}

} // namespace

PortMapping::PortMapping(std::uint16_t newKnown, std::uint16_t newActual) : known(newKnown), actual(newActual)
{
    mapping = this;
}

PortMapping::~PortMapping()
{
    mapping = nullptr;
}

LossyKernel::LossyKernel(std::uint32_t newLost, unsigned newTold) : lost(newLost), told(newTold)
{
    lossy = this;
}

LossyKernel::~LossyKernel()
{
    lossy = nullptr;
}

std::uint16_t PortMapping::actualOf(std::uint16_t port)
{
    return mapping != nullptr && port == mapping->known ? mapping->actual : port;
}

std::uint16_t PortMapping::knownOf(std::uint16_t port)
{
    return mapping != nullptr && port == mapping->actual ? mapping->known : port;
}

extern "C" int fake_socket(int family, int type, int protocol)
{
    return replaced("socket", nameOfSocketType(type), -1, [&] { return ::socket(family, type, protocol); });
}

extern "C" int fake_setsockopt(int descriptor, int level, int option, const void* value, socklen_t length)
{
    return replaced("setsockopt", describeOption(level, option, value, length), -1,
                    [&] { return ::setsockopt(descriptor, level, option, value, length); });
}

extern "C" int fake_getsockopt(int descriptor, int level, int option, void* value, socklen_t* length)
{
    return replaced("getsockopt", std::to_string(level) + "/" + std::to_string(option), -1, [&] {
        const bool isToldLosses = lossy != nullptr && level == SOL_SOCKET && option == SO_MEMINFO;
        return isToldLosses ? tellLosses(value, *length) : ::getsockopt(descriptor, level, option, value, length);
    });
}

extern "C" int fake_bind(int descriptor, const sockaddr* address, socklen_t length)
{
    return replaced("bind", describe(inet(address)), -1, [&] { return ::bind(descriptor, address, length); });
}

extern "C" int fake_listen(int descriptor, int backlog)
{
    return replaced("listen", std::to_string(backlog), -1, [&] { return ::listen(descriptor, backlog); });
}

extern "C" int fake_accept(int descriptor, sockaddr* address, socklen_t* length)
{
    return replaced("accept", {}, -1, [&] { return ::accept(descriptor, address, length); });
}

extern "C" int fake_accept4(int descriptor, sockaddr* address, socklen_t* length, int flags)
{
    return replaced("accept", {}, -1, [&] { return ::accept4(descriptor, address, length, flags); });
}

extern "C" ssize_t fake_recv(int descriptor, void* buffer, size_t size, int flags)
{
    return receive(descriptor, buffer, size, flags);
}

extern "C" ssize_t fake_recv_chk(int descriptor, void* buffer, size_t size, size_t, int flags)
{
    return receive(descriptor, buffer, size, flags);
}

extern "C" ssize_t fake_recvfrom(int descriptor, void* buffer, size_t size, int flags, sockaddr* from,
                                 socklen_t* length)
{
    return receiveFrom(descriptor, buffer, size, flags, from, length);
}

extern "C" ssize_t fake_recvfrom_chk(int descriptor, void* buffer, size_t size, size_t, int flags, sockaddr* from,
                                     socklen_t* length)
{
    return receiveFrom(descriptor, buffer, size, flags, from, length);
}

extern "C" ssize_t fake_send(int descriptor, const void* data, size_t size, int flags)
{
    return replacedMoving("send", std::to_string(size) + ((flags & MSG_MORE) != 0 ? " MSG_MORE" : ""), ssize_t{-1},
                          size, [&](size_t bytes) { return ::send(descriptor, data, bytes, flags); });
}

extern "C" ssize_t fake_sendto(int descriptor, const void* data, size_t size, int flags, const sockaddr* to,
                               socklen_t length)
{
    const sockaddr_in local = onLoopback(inet(to));
    return replacedMoving(
        "sendto", std::to_string(size) + " " + describe(inet(to)), ssize_t{-1}, size, [&](size_t bytes) {
            return ::sendto(descriptor, data, bytes, flags, reinterpret_cast<const sockaddr*>(&local), length);
        });
}

extern "C" int fake_connect(int descriptor, const sockaddr* address, socklen_t length)
{
    const sockaddr_in local = onLoopback(inet(address));
    return replaced("connect", describe(inet(address)), -1,
                    [&] { return ::connect(descriptor, reinterpret_cast<const sockaddr*>(&local), length); });
}

extern "C" int fake_inet_aton(const char* text, in_addr* address)
{
    return replaced("inet_aton", text, 0, [&] { return ::inet_aton(text, address); });
}

// The other names of these calls.
extern "C" [[gnu::alias("fake_setsockopt")]] int fake_setsockopt64(int, int level, int option, const void*, socklen_t);
extern "C" [[gnu::alias("fake_getsockopt")]] int fake_getsockopt64(int, int level, int option, void*, socklen_t*);
