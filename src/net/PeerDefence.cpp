// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/PeerDefence.h"

#include "util/Log.h"

#include <cstddef>

#include <sys/socket.h>
#include <sys/time.h>

namespace
{

constexpr int mostSeconds = 30;

} // namespace

void limitStalls(int connection)
{
    timeval silence = {};
    silence.tv_sec = mostSeconds;
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &silence, sizeof silence);
}

void giveUpStalled(int connection)
{
    logWarning("Client has sent nothing for %d s in the middle of a message, close the connection", mostSeconds);
    shutdown(connection, SHUT_RDWR);
}

void dropUrgentByte(int connection)
{
    std::byte urgent = {};
    static_cast<void>(recv(connection, &urgent, sizeof urgent, MSG_OOB | MSG_DONTWAIT));
}
