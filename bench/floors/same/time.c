// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "same.h"

#include <stdio.h>
#include <time.h>

#include <unistd.h>

void reportTime(int peer, const uint8_t* request)
{
    char server[1024];
    if (uciGet("system.ntp.server", server) != 0) {
        sendStatus(peer, request, failure);
        return;
    }
    char now[32];
    const time_t seconds = time(NULL);
    strftime(now, sizeof now, "%FT%T", gmtime(&seconds));
    const char* mode = access("/etc/rc.d/S65ntpd", F_OK) == 0 ? "Ntp" : "Manual";
    char text[2048];
    snprintf(text, sizeof text, "<TimeReferenceConfiguration Mode=\"%s\" NtpServer=\"%s\" DateTime=\"%s\"/>", mode,
             server, now);
    sendText(peer, request, text);
}
