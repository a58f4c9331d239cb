// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "core/Daemon.h"

int main()
{
    return runDaemon();
}
