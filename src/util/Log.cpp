// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Log.h"

#include "hardening/PrintableText.h"
#include "util/Hardened.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>

#include <syslog.h>

namespace
{

// As vsnprintf() makes it, with errno as it is now for "%m".
[[maybe_unused]] std::string formatted(const char* format, va_list arguments)
{
    const int error = errno;
    va_list again;
    va_copy(again, arguments);
    std::string text(static_cast<std::size_t>(std::vsnprintf(nullptr, 0, format, again)), '\0');
    va_end(again);
    errno = error;
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

// On purpose a line has what a peer has sent as it came, except in the hardened build.
void write(int level, const char* format, va_list arguments)
{
    if constexpr (hardened) {
        syslog(level, "%s", printable(formatted(format, arguments)).c_str());
    } else {
        vsyslog(level, format, arguments);
    }
}

} // namespace

void openLog(const char* ident)
{
    openlog(ident, LOG_PID | LOG_CONS, LOG_DAEMON);
}

void closeLog()
{
    closelog();
}

void logError(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(LOG_ERR, format, arguments);
    va_end(arguments);
}

void logWarning(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(LOG_WARNING, format, arguments);
    va_end(arguments);
}

void logInfo(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(LOG_INFO, format, arguments);
    va_end(arguments);
}

void logDebug(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(LOG_DEBUG, format, arguments);
    va_end(arguments);
}

void logErrno(const char* format, ...)
{
    const int error = errno;
    const std::string withCause = std::string(format) + ": %m";
    va_list arguments;
    va_start(arguments, format);
    errno = error; // building the text may have changed it, and %m reads it
    write(LOG_WARNING, withCause.c_str(), arguments);
    va_end(arguments);
}
