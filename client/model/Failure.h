// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Category.h"
#include "client/model/ExitCode.h"

#include <string>
#include <string_view>
#include <utility>

// Why a job could not be done: thrown where that is found out, caught once per target and once per program.
struct Failure {
    ExitCode code = ExitCode::internal;
    Category category = Category::none;
    std::string phase; // what was being done, such as "waiting for the versions report"; added on the way up
    std::string hint;  // a sentence for people: what happened, likely causes, what to do
};

// Did the request that failed so never leave this machine? Unreachable is what no connection leads to, or no interface
// took: nothing was there to send it over.
[[nodiscard]] inline bool wasNotSent(const Failure& failure)
{
    return failure.code == ExitCode::unreachable || failure.category == Category::noSocket;
}

// Is it one of this machine, which then has seen nothing of any card?
[[nodiscard]] inline bool isOfThisMachine(const Failure& failure)
{
    return failure.category == Category::noInterface || failure.category == Category::noNetwork ||
           failure.category == Category::noSocket;
}

[[nodiscard]] inline Failure usageFailure(std::string hint)
{
    return {ExitCode::usage, Category::usage, "reading the command line", std::move(hint)};
}

// A card, or what is taken for one, said what no card says.
[[nodiscard]] inline Failure garbage(std::string hint)
{
    return {ExitCode::protocol, Category::garbage, {}, std::move(hint)};
}
