// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/SetupError.h"

#include "util/Log.h"

void failSetup(const char* text)
{
    logErrno("%s", text);
    throw SetupError(text);
}
