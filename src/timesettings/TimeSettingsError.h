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

    // `text` directly followed by the text of errno.
    static TimeSettingsError fromErrno(const std::string& text)
    {
        const char* cause = std::strerror(errno);
        return TimeSettingsError(text + cause);
    }
};
