// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/ReadBack.h"

#include <algorithm>
#include <fmt/core.h>

Task<std::optional<Failure>> failureOf(Task<void> work)
{
    try {
        co_await work;
    } catch (const Failure& failure) {
        co_return failure;
    }
    co_return std::nullopt;
}

Task<std::optional<Failure>> readBack(EventLoop& loop, TimePoint end, std::function<Task<void>()> ask)
{
    constexpr Seconds attemptPause{0.5}; // chosen: a card that is busy is not made busier
    for (;;) {
        std::optional<Failure> failure = co_await failureOf(ask());
        const bool isFinal =
            !failure || failure->code == ExitCode::protocol || failure->code == ExitCode::refusedByCard;
        if (isFinal || Clock::now() >= end) {
            co_return failure;
        }
        co_await loop.until(std::min(end, after(attemptPause)));
    }
}

Failure unread(Failure failure, const Failure& cause)
{
    failure.hint += fmt::format("; what the card has now is not known: {}", cause.hint);
    return failure;
}

Failure unknownOutcome(const std::string& what, Failure cause)
{
    // Whatever this machine failed at, for a script it is a card that did not say.
    cause.code = ExitCode::noAnswer;
    cause.hint = fmt::format("{}: {}", what, cause.hint);
    return cause;
}
