// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceUdp.h"

#include "util/LibUtils.h"
#include "util/Log.h"

namespace
{

// In the background and after a delay, so that the shell returns at once and the reply still gets out. The exit
// code is the shell's: a reboot that fails later has been answered with success.
int startReboot()
{
    try {
        return LibUtils::executeCommand("reboot -d 2 &");
    } catch (...) {
        return -1;
    }
}

} // namespace

int TarvelServiceUdp::rebootCard(const Envelope& /*envelope*/)
{
    logInfo("***** WARNING: Card will reboot in a few seconds *****");
    if (startReboot() != 0) {
        logWarning("reboot command failed");
        return refuse();
    }
    broadcastStatus(Status::success);
    return 0;
}
