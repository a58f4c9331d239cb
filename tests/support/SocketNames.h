// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <netinet/in.h>
#include <string>

// The journal's words for the arguments of socket calls.
std::string nameOfSocketType(int type);                                                 // SOCK_STREAM|SOCK_CLOEXEC
std::string describeOption(int level, int option, const void* value, socklen_t length); // SO_BINDTODEVICE eth0
std::string describe(const sockaddr_in& address);                                       // 127.0.0.1:50003
