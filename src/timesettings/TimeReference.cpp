// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/TimeReference.h"

#include "timesettings/LockFile.h"
#include "timesettings/NtpService.h"
#include "timesettings/TimeSettingsError.h"
#include "util/File.h"
#include "util/Log.h"

#include <cstdio>
#include <ctime>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>

#include <unistd.h>

namespace
{

constexpr const char* lockPath = "/var/timesettings.lock";
constexpr const char* markerPath = "/var/timesettings.replication";

using OptionalServer = std::optional<std::string>;

int setServerIfGiven(const OptionalServer& server)
{
    return server ? setNtpServerAddress(*server) : 0;
}

// Each action is taken only if the one before could be.
int controlInTurn(std::initializer_list<NtpServiceAction> actions)
{
    for (const NtpServiceAction action : actions) {
        if (controlNtpService(action) == -1) {
            return -1;
        }
    }
    return 0;
}

int applyNtp(const OptionalServer& server)
{
    logInfo("Setting NTP time reference");
    if (setServerIfGiven(server) == -1) {
        return -1;
    }
    // On purpose stop and start instead of restart.
    return controlInTurn({NtpServiceAction::enable, NtpServiceAction::stop, NtpServiceAction::start});
}

int setClock(long unixTime)
{
    logInfo("Setting unix time to %ld", unixTime);
    timespec time = {};
    time.tv_sec = unixTime;
    if (clock_settime(CLOCK_REALTIME, &time) == -1) {
        logErrno("clock_settime() FAILED");
        return -1;
    }
    return 0;
}

int applyManual(const OptionalServer& server, long unixTime)
{
    logInfo("Setting manual time reference");
    // On purpose the server is set in this mode, too: it is there when NTP is switched on again.
    if (setServerIfGiven(server) == -1) {
        return -1;
    }
    if (controlInTurn({NtpServiceAction::disable, NtpServiceAction::stop}) == -1) {
        return -1;
    }
    return setClock(unixTime);
}

int apply(const std::string& mode, const OptionalServer& server, long unixTime)
{
    if (mode == "Ntp") {
        return applyNtp(server);
    }
    if (mode == "Manual") {
        return applyManual(server, unixTime);
    }
    logWarning("Unsupported time reference mode \"%s\"", mode.c_str());
    return -1;
}

int leaveReplicationMarker()
{
    File marker(markerPath, "we");
    if (!marker) {
        logErrno("fopen() FAILED");
        return -1;
    }
    if (marker.close() != 0) {
        logErrno("fclose() FAILED");
    }
    return 0;
}

int failed(const TimeSettingsError& error)
{
    logWarning("%s", error.what());
    return -1;
}

} // namespace

int tsSetTimeReference(const char* mode, const char* ntpServer, long unixTime, int replicate)
{
    const std::string wantedMode = mode;
    const OptionalServer server = ntpServer != nullptr ? OptionalServer(ntpServer) : std::nullopt;

    LockFile lockFile; // outlives the handler: the reason of a failure is logged before the clean-up
    try {
        lockFile.open(lockPath);
        lockFile.lock();
        int result = apply(wantedMode, server, unixTime);
        // On purpose also after a failure: part of the reference may have changed.
        if (replicate != 0 && leaveReplicationMarker() == -1) {
            result = -1;
        }
        lockFile.unlock();
        lockFile.close();
        return result;
    } catch (const TimeSettingsError& error) {
        return failed(error);
    }
}

int tsGetTimeReference(char* mode, char* ntpServer, std::time_t* now)
{
    try {
        isNtpEnabled(std::span<char, timeModeSize>(mode, timeModeSize));
        if (getCurrentNtpServerAddress(std::span<char, ntpServerAddressSize>(ntpServer, ntpServerAddressSize)) == -1) {
            throw TimeSettingsError("getCurrentNtpServerAddress() FAILED");
        }
        std::time(now);
        if (*now == -1) {
            throw TimeSettingsError::fromErrno("time() FAILED: ");
        }
        return 0;
    } catch (const TimeSettingsError& error) {
        return failed(error);
    }
}

int tsIsReplicationNeeded()
{
    return access(markerPath, F_OK) == 0 ? 1 : 0;
}

int tsSetReplicationDone()
{
    try {
        if (tsIsReplicationNeeded() == 0) {
            throw TimeSettingsError("calling tsSetReplicationDone() when no replication is needed");
        }
        if (std::remove(markerPath) != 0) {
            throw TimeSettingsError::fromErrno("remove() failed: ");
        }
        return 0;
    } catch (const TimeSettingsError& error) {
        return failed(error);
    }
}
