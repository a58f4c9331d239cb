// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

// Carries a message text inside this folder, from the step that failed to the operation that logs it.
class TimeSettingsError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    // `text` directly followed by the text of errno, which is read before anything else can change it.
    static TimeSettingsError fromErrno(const char* text)
    {
        const int reason = errno;
        return TimeSettingsError(std::string(text) + std::strerror(reason));
    }
};
