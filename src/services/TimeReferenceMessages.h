// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>

// Stores the current time as UTC, like 2021-03-04T05:06:07. Returns 0, or -1 after logging.
int getUtcDateTime(std::string& text);

// Reads a TimeReferenceConfiguration element and applies it with replication requested. The element's name is
// compared as a prefix on purpose, and a DateTime out of range is normalised, not refused. Returns 0 when the time
// reference was applied, -1 otherwise, after logging.
int parseTimeReferenceConfiguration(std::string payload);
