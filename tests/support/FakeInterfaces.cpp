// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// The network interfaces: the loopback device, and what a test adds. What else the machine has would decide what a test
// sees; and under an emulator, which hands on the kernel's list as it stands, some C libraries never come to its end.

#include "support/FakeInterface.h"
#include "support/Replaced.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace
{

FakeInterface* added = nullptr;

sockaddr_in inet(in_addr_t number)
{
    sockaddr_in result = {};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = number;
    return result;
}

class Entry
{
public:
    Entry(char* name, unsigned flags, in_addr_t number, in_addr_t mask) : address(inet(number)), netmask(inet(mask))
    {
        entry.ifa_name = name;
        entry.ifa_flags = flags;
    }

    ifaddrs* before(ifaddrs* next)
    {
        entry.ifa_next = next;
        entry.ifa_addr = reinterpret_cast<sockaddr*>(&address);
        entry.ifa_netmask = reinterpret_cast<sockaddr*>(&netmask);
        return &entry;
    }

private:
    sockaddr_in address;
    sockaddr_in netmask;
    ifaddrs entry = {};
};

ifaddrs* listInterfaces()
{
    static char name[] = "lo";
    static Entry loopback(name, IFF_UP | IFF_LOOPBACK | IFF_RUNNING, htonl(INADDR_LOOPBACK), htonl(IN_CLASSA_NET));
    if (added == nullptr) {
        return loopback.before(nullptr);
    }
    static Entry other = Entry(name, 0, 0, 0);
    const unsigned up = added->isUp ? IFF_UP | IFF_RUNNING : 0U;
    other = Entry(added->name.data(), up | IFF_BROADCAST, added->address, added->netmask);
    return loopback.before(other.before(nullptr));
}

} // namespace

FakeInterface::FakeInterface(std::string newName, const std::string& newAddress, const std::string& newNetmask)
    : name(std::move(newName)), address(::inet_addr(newAddress.c_str())), netmask(::inet_addr(newNetmask.c_str()))
{
    added = this;
}

FakeInterface::~FakeInterface()
{
    added = nullptr;
}

extern "C" int fake_getifaddrs(ifaddrs** list)
{
    return replaced("getifaddrs", {}, -1, [&] {
        *list = listInterfaces();
        return 0;
    });
}

extern "C" void fake_freeifaddrs(ifaddrs* /*list*/) {}
