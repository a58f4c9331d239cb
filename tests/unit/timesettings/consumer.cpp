// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// A replication consumer outside the daemon. Names that the library has within are its own here, and mean other things;
// the system calls that would look at this machine are, too.
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <string>

#include <timesettings/TimeReference.h>

namespace
{

std::string logged;
bool ownLogIsOpen = false;

int note(const char* format, va_list arguments)
{
    char line[200];
    std::vsnprintf(line, sizeof line, format, arguments);
    logged = line;
    return 0;
}

} // namespace

struct Uci {
    static int Get(const std::string& key, std::string& value);
};

int Uci::Get(const std::string& key, std::string& value)
{
    value = "mine: " + key;
    return 7;
}

void openLog(const char* /*ident*/)
{
    ownLogIsOpen = true;
}

// What the library calls: there is no marker, and its log is read here.
extern "C" int access(const char* /*path*/, int /*mode*/) noexcept
{
    return -1;
}

// All of the log, since a static C library has it in one piece: what is missing here would bring in the rest once more.
extern "C" void openlog(const char* /*ident*/, int /*options*/, int /*facility*/) {}

extern "C" void closelog() {}

extern "C" void vsyslog(int /*priority*/, const char* format, va_list arguments)
{
    note(format, arguments);
}

// The hardened build has a line ready before it logs it.
extern "C" void syslog(int /*priority*/, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    note(format, arguments);
    va_end(arguments);
}

extern "C" void __syslog_chk(int /*priority*/, int /*flag*/, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    note(format, arguments);
    va_end(arguments);
}

extern "C" void __vsyslog_chk(int /*priority*/, int /*flag*/, const char* format, va_list arguments)
{
    note(format, arguments);
}

namespace
{

// The library throws and catches an exception within.
bool libraryReportsItsFailure()
{
    return tsIsReplicationNeeded() == 0 && tsSetReplicationDone() == -1 &&
           logged == "calling tsSetReplicationDone() when no replication is needed";
}

bool ownNamesAreOurs()
{
    openLog("consumer");
    std::string value;
    return Uci::Get(std::string("system") + std::string(".ntp"), value) == 7 && value == "mine: system.ntp" &&
           ownLogIsOpen;
}

bool ownExceptionsAreCaught()
{
    try {
        throw std::runtime_error(std::string("own") + " one");
    } catch (const std::exception& error) {
        return error.what() == std::string("own one");
    }
}

} // namespace

int main(int argc, char** /*arguments*/)
{
    if (argc > 1) { // never: linked, but they would change this machine
        char mode[7];
        char server[100];
        std::time_t now = 0;
        return tsGetTimeReference(mode, server, &now) + tsSetTimeReference(mode, server, static_cast<long>(now), 1);
    }
    return libraryReportsItsFailure() && ownNamesAreOurs() && ownExceptionsAreCaught() ? 0 : 1;
}
