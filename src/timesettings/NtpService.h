// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

// What can be asked of the card's two NTP init scripts. Any other code counts as start.
enum class NtpServiceAction : std::uint32_t { start, stop, restart, enable, disable };

inline constexpr std::size_t ntpServerAddressSize = 100; // with the terminating NUL
inline constexpr std::size_t timeModeSize = 7;           // "Manual" with its NUL, the longer of the two modes

// Runs the one-shot synchroniser's script, then the NTP daemon's. Their exit statuses are ignored on purpose:
// returns -1 only when a script could not be run at all, and then runs no further one. Logs nothing.
int controlNtpService(NtpServiceAction action);

// Reads the configured server, cut at 99 characters, with its NUL. Returns 0, or -1 with an empty text when the
// setting cannot be read. Logs nothing.
int getCurrentNtpServerAddress(std::span<char, ntpServerAddressSize> address);

// Stages a new server unless it is the current one. On purpose nothing is committed. Returns 0, or -1 without a
// message when the current server cannot be read or the new one cannot be set. The hardened build refuses, with a
// warning, a new one that is no plain address or host name.
int setNtpServerAddress(const std::string& newAddress);

// Writes "Ntp" and returns 0 when the NTP daemon starts at boot, else writes "Manual" and returns -1, which is no
// error.
int isNtpEnabled(std::span<char, timeModeSize> mode);
