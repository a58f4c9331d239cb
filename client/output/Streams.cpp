// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Streams.h"

#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace
{

void write(std::string_view text, std::FILE* stream)
{
    // On purpose: the stream remembers that it failed.
    [[maybe_unused]] const std::size_t ignored = std::fwrite(text.data(), 1, text.size(), stream);
}

bool readerIsGone()
{
    // Asked of the pipe, because a failed write of long ago has left no errno.
    pollfd output = {STDOUT_FILENO, 0, 0};
    return ::poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

} // namespace

void writeData(std::string_view text)
{
    write(text, stdout);
}

void writeMessage(std::string_view text)
{
    write(text, stderr);
}

Delivery finishData()
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return Delivery::complete;
    }
    return readerIsGone() ? Delivery::readerGone : Delivery::failed;
}
