// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/ExitCode.h"

#include <string>
#include <string_view>
#include <utility>

// Why a job could not be done: thrown where that is found out, caught once per target and once per program.
struct Failure {
    ExitCode code = ExitCode::internal;
    std::string category; // one word for scripts, such as "timeout"
    std::string phase;    // what was being done, such as "waiting for the versions report"
    std::string hint;     // a sentence for people: what happened, likely causes, what to do
};

inline constexpr std::string_view nothingToDoCategory = "nothing-to-do";

// The card is as wanted already: an outcome that a script may ask for, and no error.
[[nodiscard]] inline Failure nothingToDo(std::string hint)
{
    return {ExitCode::differs, std::string(nothingToDoCategory), "planning the change", std::move(hint)};
}

[[nodiscard]] inline Failure usageFailure(std::string hint)
{
    return {ExitCode::usage, "usage", "reading the command line", std::move(hint)};
}
