// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <stdexcept>

// Thrown, after its message is in the log, when a socket cannot be set up. Nothing catches it on purpose: a daemon
// without its sockets is of no use, and the supervisor starts the next one.
class SetupError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Logs `text` as a warning with the text of errno and throws.
[[noreturn]] void failSetup(const char* text);
