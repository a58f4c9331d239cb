// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/CapturedLog.h"

#include "support/Journal.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <syslog.h>

namespace
{

CapturedLog* activeLog = nullptr;

// As long as the longest message that production code has, with room to spare: a log line names paths and versions.
std::string formatted(const char* format, va_list arguments)
{
    std::array<char, 8192> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    return text.data();
}

void capture(int level, const char* format, va_list arguments)
{
    std::string text = formatted(format, arguments);
    recordCall("log", text);
    if (activeLog != nullptr) {
        activeLog->add(level, std::move(text));
    }
}

} // namespace

CapturedLog::CapturedLog()
{
    activeLog = this;
}

CapturedLog::~CapturedLog()
{
    activeLog = nullptr;
}

void CapturedLog::add(int level, std::string text)
{
    captured.push_back({level, std::move(text)});
}

std::vector<std::string> CapturedLog::texts() const
{
    std::vector<std::string> all;
    for (const Line& line : captured) {
        all.push_back(line.text);
    }
    return all;
}

std::vector<std::string> CapturedLog::withLevel(int level) const
{
    std::vector<std::string> found;
    for (const Line& line : captured) {
        if (line.level == level) {
            found.push_back(line.text);
        }
    }
    return found;
}

std::vector<std::string> CapturedLog::errors() const
{
    return withLevel(LOG_ERR);
}

std::vector<std::string> CapturedLog::warnings() const
{
    return withLevel(LOG_WARNING);
}

std::vector<std::string> CapturedLog::infos() const
{
    return withLevel(LOG_INFO);
}

std::vector<std::string> CapturedLog::debugs() const
{
    return withLevel(LOG_DEBUG);
}

extern "C" void fake_vsyslog(int level, const char* format, va_list arguments)
{
    capture(level, format, arguments);
}

extern "C" void fake_vsyslog_chk(int level, int, const char* format, va_list arguments)
{
    capture(level, format, arguments);
}

extern "C" void fake_syslog(int level, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    capture(level, format, arguments);
    va_end(arguments);
}

extern "C" void fake_syslog_chk(int level, int, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    capture(level, format, arguments);
    va_end(arguments);
}

extern "C" void fake_openlog(const char* ident, int option, int facility)
{
    recordCall("openlog", std::string(ident) + " " + std::to_string(option) + " " + std::to_string(facility));
}

extern "C" void fake_closelog()
{
    recordCall("closelog", {});
}
