// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Shell.h"

#include <cstdlib>

int runShell(const std::string& command)
{
    // The card's settings and services are only reachable through its shell tools.
    return std::system(shellText(command).c_str()); // NOLINT(cert-env33-c)
}
