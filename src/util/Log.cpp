// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Log.h"

#include <cerrno>
#include <cstdarg>
#include <string>

#include <syslog.h>

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
    vsyslog(LOG_ERR, format, arguments);
    va_end(arguments);
}

void logWarning(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_WARNING, format, arguments);
    va_end(arguments);
}

void logInfo(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_INFO, format, arguments);
    va_end(arguments);
}

void logDebug(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_DEBUG, format, arguments);
    va_end(arguments);
}

void logErrno(const char* format, ...)
{
    const int error = errno;
    const std::string withCause = std::string(format) + ": %m";
    va_list arguments;
    va_start(arguments, format);
    errno = error; // building the text may have changed it, and %m reads it
    vsyslog(LOG_WARNING, withCause.c_str(), arguments);
    va_end(arguments);
}
