// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "bare.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

static uint8_t reply[headerSize + countSize + 4096];

static void storeUpload(int peer)
{
    static char buffer[65536];
    recv(peer, buffer, countSize, MSG_WAITALL);
    uint32_t remaining = readLittle32((const uint8_t*)buffer);
    const int file = open("firmware.tar.gz", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    while (remaining > 0) {
        const ssize_t n = recv(peer, buffer, remaining < sizeof buffer ? remaining : sizeof buffer, 0);
        if (n < 1 || write(file, buffer, (size_t)n) != n) {
            break;
        }
        remaining -= (uint32_t)n;
    }
    close(file);
}

// A short piece that waits for the acknowledgement of the one before would delay the rest: more follows.
static void sendText(int peer, uint32_t count)
{
    writeLittle32(reply + headerSize, count);
    send(peer, reply, headerSize, MSG_MORE);
    send(peer, reply + headerSize, countSize, MSG_MORE);
    send(peer, reply + headerSize + countSize, count, 0);
}

static void answer(int peer, const uint8_t* request)
{
    char* text = (char*)reply + headerSize + countSize;
    uint32_t count = 0;
    uint8_t status = success;
    switch (commandOf(request)) {
    case 1:
        count = versionsText(text);
        break;
    case 7:
        storeUpload(peer);
        break;
    case 16:
        count = timeText(text);
        break;
    default:
        status = unknownCommand;
    }
    fillReply(reply, request, status, count > 0 ? countSize + count : 0);
    if (count > 0) {
        sendText(peer, count);
    } else {
        send(peer, reply, headerSize, 0);
    }
}

static int listenOn(uint16_t port)
{
    const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int one = 1;
    setsockopt(server, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    const struct sockaddr_in address = {.sin_family = AF_INET, .sin_port = htons(port)};
    bind(server, (const struct sockaddr*)&address, sizeof address);
    listen(server, 0);
    return server;
}

void serveConnections(uint16_t port)
{
    const int server = listenOn(port);
    for (int peer; (peer = accept4(server, NULL, NULL, SOCK_CLOEXEC)) != -1; close(peer)) {
        uint8_t request[headerSize];
        while (waitFor(peer) && recv(peer, request, sizeof request, MSG_WAITALL) == headerSize) {
            answer(peer, request);
        }
    }
}
