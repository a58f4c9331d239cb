// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// Appends one component line to a versions text. On purpose nothing is escaped: both values stand as they were read.
void appendComponentLine(std::string& text, std::string_view id, std::string_view version);
