// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "same.h"

#include <stdlib.h>
#include <string.h>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <syslog.h>
#include <unistd.h>

int openSocket(int type)
{
    const int made = socket(AF_INET, type | SOCK_CLOEXEC, 0);
    syslog(LOG_INFO, "%s socket (%d) successfully created", type == SOCK_STREAM ? "Stream" : "Datagram", made);
    return made;
}

static void setOption(int socket, int level, int option, int value)
{
    setsockopt(socket, level, option, &value, sizeof value);
}

static void bindTo(int socket, const char* device)
{
    setOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);
    syslog(LOG_INFO, "Server socket options successfully set");
    const struct sockaddr_in address = {.sin_family = AF_INET, .sin_port = htons(port)};
    if (bind(socket, (const struct sockaddr*)&address, sizeof address) != 0) {
        abort();
    }
    syslog(LOG_INFO, "Bind() was successful");
    if (*device != '\0') {
        setsockopt(socket, SOL_SOCKET, SO_BINDTODEVICE, device, (socklen_t)strlen(device) + 1);
        syslog(LOG_INFO, "BindToDevice (%s) was successful", device);
    }
}

int listenOn(void)
{
    const int server = openSocket(SOCK_STREAM);
    bindTo(server, "");
    listen(server, 0);
    syslog(LOG_INFO, "Listen on port %hu was successful", port);
    return server;
}

int openUdp(const char* device)
{
    const int made = openSocket(SOCK_DGRAM);
    bindTo(made, device);
    setOption(made, SOL_SOCKET, SO_BROADCAST, 1);
    return made;
}

void closeSocket(int socket)
{
    close(socket);
    syslog(LOG_INFO, "Socket (%d) successfully closed", socket);
}

int acceptPeer(int server)
{
    struct sockaddr_in client = {0};
    socklen_t length = sizeof client;
    const int peer = accept4(server, (struct sockaddr*)&client, &length, SOCK_CLOEXEC);
    syslog(LOG_INFO, "Connection from %s accepted on ports %hu/%hu", inet_ntoa(client.sin_addr), port,
           ntohs(client.sin_port));
    setOption(peer, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(peer, IPPROTO_TCP, TCP_KEEPIDLE, 60);
    setOption(peer, IPPROTO_TCP, TCP_KEEPINTVL, 10);
    setOption(peer, IPPROTO_TCP, TCP_KEEPCNT, 3);
    setOption(peer, IPPROTO_TCP, TCP_USER_TIMEOUT, 90000);
    return peer;
}
