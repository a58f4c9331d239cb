// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "bare.h"

#include <string.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

enum { ownDevice = 5, deviceOffset = 6 };

static uint8_t datagram[4097];
static char hostName[256];

// Cuts the value of an attribute out of the document; this floor knows how its client writes.
static char* attribute(const char* name)
{
    char* value = strstr((char*)datagram + headerSize + countSize, name) + strlen(name);
    *strchr(value, '"') = '\0';
    return value;
}

// The size of the answer in the place of the datagram, 0 for none.
static size_t answer(struct sockaddr_in* sender)
{
    if (datagram[deviceOffset] != ownDevice) {
        return 0;
    }
    if (commandOf(datagram) != 3) {
        fillReply(datagram, datagram, unknownCommand, 0);
        return headerSize;
    }
    const char* to = attribute(" To=\"");
    if (strcmp(to, hostName) != 0) {
        return 0;
    }
    const uint32_t count = ipText((char*)datagram + headerSize + countSize, hostName);
    fillReply(datagram, datagram, success, countSize + count);
    writeLittle32(datagram + headerSize, count);
    sender->sin_addr.s_addr = INADDR_BROADCAST;
    return headerSize + countSize + count;
}

void serveDatagrams(uint16_t port)
{
    *appendSetting(hostName, "system.@system[0].hostname") = '\0';
    const int one = 1;
    const int server = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const struct sockaddr_in address = {.sin_family = AF_INET, .sin_port = htons(port)};
    bind(server, (const struct sockaddr*)&address, sizeof address);
    setsockopt(server, SOL_SOCKET, SO_BINDTODEVICE, "eth0", sizeof "eth0");
    setsockopt(server, SOL_SOCKET, SO_BROADCAST, &one, sizeof one);
    while (waitFor(server)) {
        struct sockaddr_in sender;
        socklen_t length = sizeof sender;
        if (recvfrom(server, datagram, sizeof datagram - 1, 0, (struct sockaddr*)&sender, &length) < headerSize) {
            return;
        }
        const size_t size = answer(&sender);
        if (size > 0) {
            sendto(server, datagram, size, 0, (struct sockaddr*)&sender, sizeof sender);
        }
    }
}
