// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "uci/Uci.h"
#include "util/Report.h"

#include <cstdlib>
#include <string_view>

#include <arpa/inet.h>
#include <unistd.h>

namespace
{

[[noreturn]] void endDaemonizing(const char* failedCall)
{
    reportFailure(std::string("ERROR while daemonizing: ") + failedCall + " failed");
    std::exit(1);
}

} // namespace

int LibUtils::isValidIpAddress(const char* text)
{
    // Some C libraries let inet_aton() accept an address followed by a blank and anything at all. The text ends
    // up in a shell command, so only characters that any of the numeric forms can hold may pass.
    const bool onlyAddressCharacters =
        std::string_view(text).find_first_not_of("0123456789ABCDEFabcdefxX.") == std::string_view::npos;

    in_addr address = {};
    if (!onlyAddressCharacters || inet_aton(text, &address) == 0) {
        reportFailure(std::string(text) + " is not a valid IP address");
        return 0;
    }
    return 1;
}

int LibUtils::getHostName(std::string& name)
{
    return Uci::Get("system.@system[0].hostname", name);
}

void LibUtils::daemonize()
{
    const pid_t child = fork();
    if (child == -1) {
        endDaemonizing("fork()");
    }
    if (child > 0) {
        std::exit(0);
    }
    if (setsid() == -1) {
        endDaemonizing("setsid()");
    }
    // On purpose nothing more: directory, file-mode mask and descriptors stay those of the caller.
    reportProgress("Process is now running as a daemon");
}
