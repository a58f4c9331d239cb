// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "core/EventLoop.h"

#include "services/TarvelServiceTcp.h"
#include "services/TarvelServiceUdp.h"
#include "util/Hardened.h"
#include "util/Log.h"

#include <algorithm>
#include <array>

namespace
{

// A service without a socket has descriptor -1, which must not be looked up in a set.
bool contains(const fd_set& set, int descriptor)
{
    return descriptor != -1 && FD_ISSET(descriptor, &set) != 0;
}

int watchedTcpDescriptor(const TarvelServiceTcp& tcp)
{
    return tcp.peerDescriptor() != -1 ? tcp.peerDescriptor() : tcp.serverDescriptor();
}

// Waits without a time-out. Returns the result of select(), with both sets filled in.
int waitForReadiness(const std::array<int, 3>& watched, fd_set& readSet, fd_set& exceptSet)
{
    FD_ZERO(&readSet);
    for (const int descriptor : watched) {
        FD_SET(descriptor, &readSet);
    }
    exceptSet = readSet;
    const int highest = *std::max_element(watched.begin(), watched.end());
    return select(highest + 1, &readSet, nullptr, &exceptSet, nullptr);
}

} // namespace

void runEventLoop(TarvelServiceTcp& tcp, TarvelServiceUdp& udpFirst, TarvelServiceUdp& udpSecond)
{
    for (;;) {
        fd_set readSet;
        fd_set exceptSet;
        const int ready = waitForReadiness({watchedTcpDescriptor(tcp), udpFirst.descriptor(), udpSecond.descriptor()},
                                           readSet, exceptSet);
        if (ready == -1) {
            logErrno("select() failed");
            return;
        }
        if (ready == 0) {
            logWarning("select() timed out");
            continue;
        }
        if (handleReadiness(readSet, exceptSet, tcp, udpFirst, udpSecond) == -1) {
            return;
        }
    }
}

int handleReadiness(const fd_set& readSet, const fd_set& exceptSet, TarvelServiceTcp& tcp, TarvelServiceUdp& udpFirst,
                    TarvelServiceUdp& udpSecond)
{
    reportExceptions(exceptSet, tcp, udpFirst, udpSecond);
    if constexpr (hardened) {
        if (contains(exceptSet, tcp.peerDescriptor())) {
            tcp.dropPeersUrgentByte();
        }
    }
    if (contains(readSet, tcp.peerDescriptor())) {
        tcp.dispatch();
    }
    if (contains(readSet, tcp.serverDescriptor()) && tcp.acceptPeer() == -1) {
        return -1;
    }
    if (contains(readSet, udpFirst.descriptor())) {
        udpFirst.processDatagram();
    }
    if (contains(readSet, udpSecond.descriptor())) {
        udpSecond.processDatagram();
    }
    return 0;
}

void reportExceptions(const fd_set& exceptSet, const TarvelServiceTcp& tcp, const TarvelServiceUdp& udpFirst,
                      const TarvelServiceUdp& udpSecond)
{
    if (contains(exceptSet, tcp.serverDescriptor())) {
        logWarning("Exception pending on Tarvel TCP server socket");
    } else if (contains(exceptSet, tcp.peerDescriptor())) {
        logWarning("Exception pending on Tarvel TCP peer socket");
    } else if (contains(exceptSet, udpFirst.descriptor())) {
        logWarning("Exception pending on VEMT Tarvel UDP socket");
    } else if (contains(exceptSet, udpSecond.descriptor())) {
        logWarning("Exception pending on KORV Tarvel UDP socket");
    }
}
