// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ask.h"
#include "timing.h"

#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

enum { lengthOffset = 16 };

static void sendAll(int socket, const uint8_t* bytes, int size, int flags)
{
    if (send(socket, bytes, (size_t)size, flags) != size) {
        fail("send");
    }
}

// Reads one reply to its end; it may come in several pieces.
static void receiveReply(int socket)
{
    uint8_t reply[4096];
    int wanted = headerSize;
    for (int received = 0; received < wanted;) {
        const ssize_t n = recv(socket, reply + received, sizeof reply - (size_t)received, 0);
        if (n < 1) {
            fail("recv");
        }
        received += (int)n;
        if (received >= headerSize) {
            wanted = headerSize + (reply[lengthOffset] | reply[lengthOffset + 1] << 8);
        }
    }
}

void connectTo(struct side* side)
{
    const int one = 1;
    side->socket = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(side->socket, (struct sockaddr*)&side->address, sizeof side->address) != 0) {
        fail("connect");
    }
    setsockopt(side->socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
}

void askConnected(struct side* side)
{
    sendAll(side->socket, job.request, job.requestSize, 0);
    receiveReply(side->socket);
}

void askFresh(struct side* side)
{
    connectTo(side);
    askConnected(side);
    close(side->socket);
}

void upload(struct side* side)
{
    static const uint8_t zeros[1 << 18];
    connectTo(side);
    sendAll(side->socket, job.request, job.requestSize, MSG_MORE);
    for (int rest = job.size; rest > 0;) {
        const int piece = rest < (int)sizeof zeros ? rest : (int)sizeof zeros;
        sendAll(side->socket, zeros, piece, 0);
        rest -= piece;
    }
    receiveReply(side->socket);
    close(side->socket);
}
