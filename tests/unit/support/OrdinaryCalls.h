// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

// Each function makes the call it is named after, as production code would.
namespace ordinary
{

int runSystem(const char* command);
std::string readPipe(const char* command);
void logWarning(const char* text);
int setClock(std::time_t moment);
std::time_t readClock();
bool exists(const char* path);
long sizeOf(const char* path);
std::string readLine(const char* path);
bool writeFile(const char* path, const char* text);
int makeDirectory(const char* path);
int countEntries(const char* path);
int lockFile(const char* path);
int openDatagramSocket();
int bindTo(int socket, std::uint16_t port);
long sendDatagram(int socket, const char* address, std::uint16_t port, const char* text);
long receiveDatagram(int socket);
int waitForNothing();
void closeDescriptor(int descriptor);

} // namespace ordinary
