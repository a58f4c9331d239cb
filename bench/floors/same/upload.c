// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "same.h"

#include <stdio.h>
#include <stdlib.h>

#include <syslog.h>

static void receiveFile(int peer, uint32_t remaining)
{
    char buffer[4096];
    FILE* file = fopen("firmware.tar.gz", "we");
    syslog(LOG_INFO, "File size = %u", remaining);
    while (remaining > 0) {
        const uint32_t piece = remaining < sizeof buffer ? remaining : (uint32_t)sizeof buffer;
        if (!receiveAll(peer, buffer, (int)piece)) {
            break;
        }
        remaining -= piece;
        fwrite(buffer, 1, piece, file);
    }
    fclose(file);
}

void storeUpload(int peer, const uint8_t* request)
{
    uint8_t count[countSize];
    if (!receiveAll(peer, count, sizeof count)) {
        return;
    }
    receiveFile(peer, readLittle32(count));
    printf("Extracting files from firmware.tar.gz to /tmp/upgrade\n");
    fflush(stdout);
    if (system("tar -xzvf firmware.tar.gz -C /tmp/upgrade") != 0) {
        fprintf(stderr, "Extracting files from archive failed\n");
        sendStatus(peer, request, failure);
        return;
    }
    remove("firmware.tar.gz");
    sendStatus(peer, request, success);
}
