// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// The floor that makes every call which the behaviour prescribes, and nothing else: no checks, no failures, no objects.

#include <stdint.h>

#include <netinet/in.h>

extern uint16_t port;
extern char hostName[1024];

// Sockets, logged as the daemon does it.
int openSocket(int type);
int listenOn(void);
int openUdp(const char* device);
void closeSocket(int socket);
int acceptPeer(int server);

// One message of the connection `peer`; 0 when it has gone.
int serveMessage(int peer);
int receiveAll(int peer, void* buffer, int length);
void sendStatus(int peer, const uint8_t* request, uint8_t status);
void sendText(int peer, const uint8_t* request, const char* text);

void reportVersions(int peer, const uint8_t* request);
void storeUpload(int peer, const uint8_t* request);
void reportTime(int peer, const uint8_t* request);

// One datagram.
void serveDatagram(int socket);
void reportIpConfiguration(int socket, uint8_t* datagram, const struct sockaddr_in* sender, const char* from);

// Calls of the card.
int readFirstLine(const char* path, char* line);
int uciGet(const char* key, char* value);
