// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <ctime>

// The card's time reference: an NTP server, or a clock that was set by hand. This header and its library can be
// installed for a replication consumer outside the daemon.
//
// Operations return 0 for success and -1 for failure, and log to syslog: progress at the informational level,
// failures as warnings.

// Applies a time reference under the lock of "/var/timesettings.lock", waiting for other processes that hold it.
//   mode       "Ntp" or "Manual", exactly
//   ntpServer  the server to configure in either mode, or null to keep the current one; staged, not committed
//   unixTime   seconds since 1970-01-01 00:00:00 UTC, used in "Manual" mode only
//   replicate  non-zero leaves the marker "/var/timesettings.replication", on purpose also after a failure
// A step that fails does not undo the steps before it.
int tsSetTimeReference(const char* mode, const char* ntpServer, long unixTime, int replicate);

// Reads the mode word (buffer of at least 7 bytes), the configured server (buffer of at least 100 bytes) and the
// current time. Takes no lock.
int tsGetTimeReference(char* mode, char* ntpServer, std::time_t* now);

// 1 if a time reference was applied that has not been replicated yet, else 0.
int tsIsReplicationNeeded();

// Removes the marker; there must be one. Takes no lock.
int tsSetReplicationDone();
