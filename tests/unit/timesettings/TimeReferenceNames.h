// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// Where the card keeps its time reference.
inline constexpr const char* serverKey = "system.ntp.server";
inline constexpr const char* lockFile = "/var/timesettings.lock";
inline constexpr const char* marker = "/var/timesettings.replication";
