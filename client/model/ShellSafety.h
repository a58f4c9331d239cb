// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// Values that a card hands to its shell unquoted: host names and addresses. Throws a usage Failure for text that a
// shell would interpret or split, unless `unsafe` (--unsafe-raw). `what` names the value in the message.
void requireShellSafe(std::string_view value, std::string_view what, bool unsafe);
