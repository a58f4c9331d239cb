// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Failure.h"

#include <string>
#include <string_view>

// What a card is doing, as `status` and `wait` say it.
inline constexpr std::string_view upAndIdle = "up and idle";
inline constexpr std::string_view up = "up"; // it takes connections, and was asked nothing
inline constexpr std::string_view busy = "busy";
inline constexpr std::string_view strange = "strange"; // it answers, but not as a card
inline constexpr std::string_view daemonDown = "daemon down";
inline constexpr std::string_view noConnection = "no connection";
inline constexpr std::string_view unreachable = "unreachable";
inline constexpr std::string_view notFound = "not found"; // by its name

// What it means that a card cannot be asked for its versions.
[[nodiscard]] std::string_view stateOf(const Failure& failure);
