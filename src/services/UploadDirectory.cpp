// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/UploadDirectory.h"

#include "util/Log.h"
#include "util/Shell.h"

#include <unistd.h>

int renewUploadDirectory()
{
    // mkdir follows no link that somebody has put there in between: it fails.
    if (runShell("rm -rf /tmp/upgrade && mkdir -m 700 /tmp/upgrade") != 0) {
        logWarning("Emptying /tmp/upgrade FAILED");
        return -1;
    }
    if (chdir("/tmp/upgrade") != 0) {
        logErrno("chdir() failed");
        return -1;
    }
    return 0;
}
