// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "same.h"

#include <errno.h>
#include <string.h>

#include <sys/socket.h>
#include <syslog.h>

int receiveAll(int peer, void* buffer, int length)
{
    int received = 0;
    while (received < length) {
        const ssize_t n = recv(peer, (char*)buffer + received, (size_t)(length - received), 0);
        if (n == 0) {
            syslog(LOG_INFO, "Client closed the connection");
            return 0;
        }
        if (n < 0) {
            syslog(LOG_WARNING, "recv() failed: %s", strerror(errno));
            return 0;
        }
        received += (int)n;
    }
    return 1;
}

void sendStatus(int peer, const uint8_t* request, uint8_t status)
{
    uint8_t reply[headerSize];
    fillReply(reply, request, status, 0);
    send(peer, reply, sizeof reply, 0);
}

void sendText(int peer, const uint8_t* request, const char* text)
{
    const uint32_t count = (uint32_t)strlen(text) + 1;
    uint8_t reply[headerSize];
    uint8_t section[countSize];
    fillReply(reply, request, success, count + countSize);
    writeLittle32(section, count);
    send(peer, reply, sizeof reply, MSG_MORE);
    send(peer, section, sizeof section, MSG_MORE);
    send(peer, text, count, 0);
}

int serveMessage(int peer)
{
    uint8_t request[headerSize];
    if (!receiveAll(peer, request, sizeof request)) {
        return 0;
    }
    switch (commandOf(request)) {
    case 1:
        reportVersions(peer, request);
        break;
    case 7:
        storeUpload(peer, request);
        break;
    case 16:
        reportTime(peer, request);
        break;
    default:
        syslog(LOG_WARNING, "Unknown command ID: 0x%x", commandOf(request));
        sendStatus(peer, request, unknownCommand);
    }
    return 1;
}
