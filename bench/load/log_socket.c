// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "log_socket.h"

#include "timing.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

int takeLog(void)
{
    const struct sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = "/dev/log"};
    const int log = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    unlink(address.sun_path);
    if (bind(log, (const struct sockaddr*)&address, sizeof address) != 0) {
        fail("/dev/log");
    }
    return log;
}
