// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "same.h"

#include <stdio.h>
#include <string.h>

#include <sys/socket.h>
#include <syslog.h>

static char document[4000];

static void append(const char* text)
{
    strcat(document, text);
}

static void appendAttribute(const char* name, const char* value)
{
    append(" ");
    append(name);
    append("=\"");
    append(value);
    append("\"");
}

static void appendOption(const char* section, const char* option, const char* name, const char* absent,
                         const char* interface)
{
    char key[64];
    char value[1024];
    snprintf(key, sizeof key, "%s.%s", section, option);
    if (uciGet(key, value) != 0) {
        syslog(LOG_INFO, "No %s defined for %s interface", absent, interface);
        return;
    }
    appendAttribute(name, strcmp(value, "static") == 0 ? "Static" : value);
}

// As for an interface in static mode, which is what is measured.
static void appendInterface(const char* interface, const char* name, const char* section)
{
    append("<Interface");
    appendAttribute("Name", name);
    appendOption(section, "proto", "Mode", "", interface);
    appendOption(section, "ipaddr", "Address", "", interface);
    appendOption(section, "netmask", "Netmask", "netmask", interface);
    appendOption(section, "gateway", "Gateway", "Gateway", interface);
    append("/>");
}

void reportIpConfiguration(int socket, uint8_t* datagram, const struct sockaddr_in* sender, const char* from)
{
    syslog(LOG_INFO, "Retrieving current IP configuration");
    snprintf(document, sizeof document, "<IpConfiguration From=\"%s\" To=\"%s\">", hostName, from);
    appendInterface("vemEth1", "VemkEth1", "network.lanvemt2eth1");
    appendInterface("vemEth2", "VemkEth2", "network.lanvemt2eth2");
    append("</IpConfiguration>");
    syslog(LOG_INFO, "copy to payload:");
    syslog(LOG_INFO, "%s", document);

    const uint32_t count = (uint32_t)strlen(document) + 1;
    fillReply(datagram, datagram, success, count + countSize);
    writeLittle32(datagram + headerSize, count);
    memcpy(datagram + headerSize + countSize, document, count);
    struct sockaddr_in everybody = *sender;
    everybody.sin_addr.s_addr = INADDR_BROADCAST;
    sendto(socket, datagram, headerSize + countSize + count, 0, (struct sockaddr*)&everybody, sizeof everybody);
}
