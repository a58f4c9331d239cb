// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// The process and its signals: the real call.

#include "support/Replaced.h"

#include <csignal>
#include <sys/select.h>
#include <unistd.h>

namespace
{

std::string nameOfHandler(const struct sigaction& action)
{
    if (action.sa_handler == SIG_IGN) {
        return "SIG_IGN";
    }
    if (action.sa_handler == SIG_DFL) {
        return "SIG_DFL";
    }
    return "handler";
}

} // namespace

extern "C" pid_t fake_fork()
{
    return replaced("fork", {}, pid_t{-1}, [] { return ::fork(); });
}

extern "C" pid_t fake_setsid()
{
    return replaced("setsid", {}, pid_t{-1}, [] { return ::setsid(); });
}

extern "C" int fake_sigaction(int signal, const struct sigaction* action, struct sigaction* previous)
{
    const std::string name = signal == SIGPIPE ? "SIGPIPE" : std::to_string(signal);
    const std::string handler = action != nullptr ? nameOfHandler(*action) : "asked";
    return replaced("sigaction", name + " " + handler, -1, [&] { return ::sigaction(signal, action, previous); });
}

extern "C" int fake_select(int count, fd_set* readable, fd_set* writable, fd_set* exceptional, timeval* limit)
{
    return replaced("select", std::to_string(count), -1,
                    [&] { return ::select(count, readable, writable, exceptional, limit); });
}

// The other names of these calls.
extern "C" [[gnu::alias("fake_select")]] int fake_select64(int, fd_set*, fd_set*, fd_set*, timeval*);
extern "C" [[gnu::alias("fake_select")]] int fake_select_time64(int, fd_set*, fd_set*, fd_set*, timeval*);
