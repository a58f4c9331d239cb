// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// The words for the system log. Texts are printf formats; every call is one syslog line.
// The services, the sockets and the time settings speak here; LibUtils and Uci use Report.h instead.

// Opens the log for `ident` with the process id on every line and the console as the last resort.
// `ident` must outlive the log.
void openLog(const char* ident);
void closeLog();

[[gnu::format(printf, 1, 2)]] void logError(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void logWarning(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void logInfo(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void logDebug(const char* format, ...);

// A warning that ends in ": " and the text of errno as it was at the call.
[[gnu::format(printf, 1, 2)]] void logErrno(const char* format, ...);
