// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/engine/InterruptSource.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace
{

volatile std::sig_atomic_t wakeDescriptor = -1; // a signal handler reaches nothing but globals

void setHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

void onSignal(int /*number*/)
{
    // The signal may come between a call and the look at its error.
    const int savedErrno = errno;
    setHandler(SIG_DFL); // of both: whichever comes second ends the program
    const char wake = 0;
    // On purpose: a full pipe already wakes the loop.
    [[maybe_unused]] const ssize_t ignored = ::write(wakeDescriptor, &wake, 1);
    errno = savedErrno;
}

} // namespace

InterruptSource::InterruptSource()
{
    std::array<int, 2> ends = {};
    // Nonblocking at both ends: a handler must never wait for the loop, nor the loop for a signal that was taken
    // already.
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == -1) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    wakeDescriptor = ends[1];
    setHandler(onSignal);
}

InterruptSource::~InterruptSource()
{
    setHandler(SIG_DFL); // first: no handler may write to what is being closed
    wakeDescriptor = -1;
}
