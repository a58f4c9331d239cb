// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Report.h"

#include <cerrno>
#include <cstring>
#include <iostream>

void reportProgress(std::string_view line)
{
    std::cout << line << std::endl;
}

void reportFailure(std::string_view line)
{
    std::cerr << line << std::endl;
}

void reportErrno(std::string_view text)
{
    const char* cause = std::strerror(errno);
    std::cerr << text << cause << std::endl;
}
