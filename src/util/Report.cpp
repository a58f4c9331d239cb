// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Report.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>

namespace
{

// In one piece, so that no other process's words come between a line and its end.
void writeLine(std::ostream& stream, std::string line)
{
    line += '\n';
    stream << line << std::flush;
}

} // namespace

void reportProgress(std::string_view line)
{
    writeLine(std::cout, std::string(line));
}

void reportFailure(std::string_view line)
{
    writeLine(std::cerr, std::string(line));
}

void reportErrno(std::string_view text)
{
    const char* cause = std::strerror(errno);
    writeLine(std::cerr, std::string(text) + cause);
}
