// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "bare.h"

#include <stdlib.h>
#include <string.h>

#include <signal.h>
#include <sys/select.h>
#include <unistd.h>

int waitFor(int socket)
{
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(socket, &readable);
    return select(socket + 1, &readable, NULL, NULL, NULL) == 1;
}

// Usage: bench_bare tcp|udp PORT
int main(int count, char** arguments)
{
    if (count != 3 || chdir("/tmp") != 0) {
        return 2;
    }
    signal(SIGPIPE, SIG_IGN);
    const uint16_t port = (uint16_t)atoi(arguments[2]);
    if (strcmp(arguments[1], "tcp") == 0) {
        serveConnections(port);
    } else {
        serveDatagrams(port);
    }
    return 1;
}
