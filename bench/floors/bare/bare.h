// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// The floor that makes only the calls which a job cannot do without: no log, no streams, no shell, no look before a
// file is opened.

#include <stdint.h>

void serveConnections(uint16_t port);
void serveDatagrams(uint16_t port);

// Waits until the socket can be read, as whoever serves several sockets must; 0 on failure.
int waitFor(int socket);

// The complete text, in a buffer of its own, and its length with the terminating NUL.
uint32_t versionsText(char* text);
uint32_t timeText(char* text);
uint32_t ipText(char* text, const char* from);

// What the settings tool prints for the key, without its newline; appended to `text`.
char* appendSetting(char* text, const char* key);
