// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/StagingMarker.h"

#include "uci/Uci.h"
#include "util/File.h"
#include "util/Log.h"

#include <cstdio>

#include <unistd.h>

namespace
{

constexpr const char* markerPath = "/var/tarveld.staging";

} // namespace

StagingMarker::StagingMarker()
{
    const File marker(markerPath, "we");
    if (!marker) {
        logErrno("fopen() failed"); // the request is served all the same
    }
}

StagingMarker::~StagingMarker()
{
    static_cast<void>(std::remove(markerPath));
}

void revertLeftSettings()
{
    if (access(markerPath, F_OK) != 0) {
        return;
    }
    logWarning("Network settings were left staged, revert them");
    Uci::Revert("network");
    static_cast<void>(std::remove(markerPath));
}
