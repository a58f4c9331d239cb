// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <sys/select.h>

class TarvelServiceTcp;
class TarvelServiceUdp;

// Serves the three services on one thread, each request to its end, until select() fails or a connection cannot be
// accepted. While a TCP connection is open only it is watched and not the listening socket: one client at a time.
void runEventLoop(TarvelServiceTcp& tcp, TarvelServiceUdp& udpFirst, TarvelServiceUdp& udpSecond);

// Serves what is readable, in the order connection, listening socket, first and second UDP socket. Returns 0, or
// -1 to end the loop.
int handleReadiness(const fd_set& readSet, const fd_set& exceptSet, TarvelServiceTcp& tcp, TarvelServiceUdp& udpFirst,
                    TarvelServiceUdp& udpSecond);

// Logs the first pending exception in the order listening socket, connection, first and second UDP socket; nothing
// else is done about it.
void reportExceptions(const fd_set& exceptSet, const TarvelServiceTcp& tcp, const TarvelServiceUdp& udpFirst,
                      const TarvelServiceUdp& udpSecond);
