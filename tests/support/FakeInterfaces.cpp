// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

// The network interfaces: the loopback device alone. What else the machine has would decide what a test sees; and under
// an emulator, which hands on the kernel's list as it stands, some C libraries never come to its end.

#include "support/Replaced.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace
{

class Loopback
{
public:
    ifaddrs* list()
    {
        entry.ifa_name = name;
        entry.ifa_flags = IFF_UP | IFF_LOOPBACK | IFF_RUNNING;
        entry.ifa_addr = reinterpret_cast<sockaddr*>(&address);
        entry.ifa_netmask = reinterpret_cast<sockaddr*>(&netmask);
        return &entry;
    }

private:
    static sockaddr_in inet(in_addr_t number)
    {
        sockaddr_in result = {};
        result.sin_family = AF_INET;
        result.sin_addr.s_addr = htonl(number);
        return result;
    }

    char name[3] = "lo";
    sockaddr_in address = inet(INADDR_LOOPBACK);
    sockaddr_in netmask = inet(IN_CLASSA_NET);
    ifaddrs entry = {};
};

} // namespace

extern "C" int fake_getifaddrs(ifaddrs** list)
{
    static Loopback loopback;
    return replaced("getifaddrs", {}, -1, [&] {
        *list = loopback.list();
        return 0;
    });
}

extern "C" void fake_freeifaddrs(ifaddrs* /*list*/) {}
