// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/MessageHeader.h"

#include <string>

// What the numbers of a header mean, in words; for a number that means nothing, that it does not.
[[nodiscard]] std::string meaningOfCommand(std::uint16_t commandId);
[[nodiscard]] std::string meaningOfStatus(const MessageHeader& header);
[[nodiscard]] std::string meaningOfFormat(std::uint8_t messageFormat);
[[nodiscard]] std::string expectedValue(std::uint32_t value, std::uint32_t expected); // empty if they are equal
