// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "same.h"

#include <string.h>

#include <arpa/inet.h>
#include <libxml/xmlreader.h>
#include <sys/socket.h>
#include <syslog.h>

enum { ownDevice = 5, deviceOffset = 6 };

// The attribute of the root; to be freed with xmlFree.
static char* attributeOf(xmlTextReaderPtr reader, const char* name)
{
    return (char*)xmlTextReaderGetAttribute(reader, (const xmlChar*)name);
}

static void serveNamed(int socket, uint8_t* datagram, const struct sockaddr_in* sender)
{
    xmlTextReaderPtr reader = xmlReaderForDoc(datagram + headerSize + countSize, "noname.xml", NULL, 0);
    xmlTextReaderRead(reader);
    xmlTextReaderConstName(reader);
    xmlTextReaderNodeType(reader);
    xmlTextReaderHasAttributes(reader);
    char* from = attributeOf(reader, "From");
    char* to = attributeOf(reader, "To");
    xmlFreeTextReader(reader);
    if (strcmp(to, hostName) == 0) {
        reportIpConfiguration(socket, datagram, sender, from);
    } else {
        syslog(LOG_INFO, "Message is for \"%s\" not for me \"%s\", drop it", to, hostName);
    }
    xmlFree(from);
    xmlFree(to);
}

void serveDatagram(int socket)
{
    uint8_t datagram[4097] = {0};
    struct sockaddr_in sender = {0};
    socklen_t length = sizeof sender;
    const ssize_t got = recvfrom(socket, datagram, sizeof datagram - 1, 0, (struct sockaddr*)&sender, &length);
    syslog(LOG_INFO, "Got datagram of %d bytes from %s on port %hu", (int)got, inet_ntoa(sender.sin_addr),
           ntohs(sender.sin_port));
    if (datagram[deviceOffset] != ownDevice) {
        syslog(LOG_INFO, "Got datagram for device %u, drop it", datagram[deviceOffset]);
    } else if (commandOf(datagram) == 3) {
        serveNamed(socket, datagram, &sender);
    } else {
        syslog(LOG_WARNING, "Unknown command ID: 0x%x", commandOf(datagram));
        fillReply(datagram, datagram, unknownCommand, 0);
        sendto(socket, datagram, headerSize, 0, (struct sockaddr*)&sender, sizeof sender);
    }
}
