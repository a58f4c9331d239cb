// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/CapturedOutput.h"

#include <array>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace
{

void flushAll()
{
    std::cout.flush();
    std::fflush(nullptr);
}

} // namespace

CapturedOutput::Stream::Stream(int number)
    : descriptor(number), original(fcntl(number, F_DUPFD_CLOEXEC, 3)), file(std::tmpfile())
{
    dup2(fileno(file), descriptor);
}

CapturedOutput::Stream::~Stream()
{
    flushAll();
    dup2(original, descriptor);
    close(original);
    std::fclose(file);
}

std::string CapturedOutput::Stream::content()
{
    flushAll();
    std::string text;
    std::array<char, 4096> piece{};
    off_t position = 0;
    ssize_t size = 0;
    while ((size = pread(fileno(file), piece.data(), piece.size(), position)) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(size));
        position += size;
    }
    return text;
}

CapturedOutput::CapturedOutput() : output((flushAll(), STDOUT_FILENO)), error(STDERR_FILENO) {}

CapturedOutput::~CapturedOutput() = default;
