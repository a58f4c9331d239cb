// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "same.h"

#include <signal.h>
#include <stdlib.h>
#include <string.h>

#include <libxml/xmlreader.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

uint16_t port = 50003;
char hostName[1024];

static void start(void)
{
    openlog("tarveld", LOG_PID | LOG_CONS, LOG_DAEMON);
    syslog(LOG_INFO, "Starting...");
    syslog(LOG_INFO, "%s", "SVN revision: 1795:4041");
    if (mkdir("/tmp/upgrade", 0777) == 0) {
        syslog(LOG_INFO, "%s successfully created", "/tmp/upgrade");
    }
    if (chdir("/tmp/upgrade") != 0) {
        abort();
    }
    syslog(LOG_INFO, "Working directory successfully changed to %s", "/tmp/upgrade");
    struct sigaction action = {.sa_handler = SIG_IGN};
    sigaction(SIGPIPE, &action, NULL);
    xmlCheckVersion(20909);
    for (int service = 0; service < 2; ++service) {
        if (uciGet("system.@system[0].hostname", hostName) != 0) {
            abort();
        }
    }
}

static void serve(int peer, int server, const int* datagrams)
{
    for (;;) {
        const int tcp = peer != -1 ? peer : server;
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(tcp, &readable);
        FD_SET(datagrams[0], &readable);
        FD_SET(datagrams[1], &readable);
        fd_set excepted = readable;
        const int highest = tcp > datagrams[1] ? tcp : datagrams[1];
        if (select(highest + 1, &readable, NULL, &excepted, NULL) < 1) {
            return;
        }
        if (peer != -1 && FD_ISSET(peer, &readable) && !serveMessage(peer)) {
            closeSocket(peer);
            peer = -1;
        }
        if (FD_ISSET(server, &readable)) {
            peer = acceptPeer(server);
        }
        for (int i = 0; i < 2; ++i) {
            if (FD_ISSET(datagrams[i], &readable)) {
                serveDatagram(datagrams[i]);
            }
        }
    }
}

// Usage: bench_same [PORT]
int main(int count, char** arguments)
{
    port = count > 1 ? (uint16_t)atoi(arguments[1]) : port;
    start();
    const int peer = openSocket(SOCK_STREAM);
    const int server = listenOn();
    const int datagrams[] = {openUdp("eth0"), openUdp("eth1")};
    serve(peer, server, datagrams);
    return 1;
}
