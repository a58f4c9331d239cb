// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/Journal.h"
#include "support/Script.h"

#include <algorithm>
#include <cerrno>
#include <type_traits>

// The body of a fake: note the call down, then do what its script says, or else the usual.
// `limited` gets the number of bytes that the call may move.
template<typename Result, typename Usual>
Result replacedMoving(const char* call, std::string arguments, Result failure, std::size_t bytes, Usual limited)
{
    recordCall(call, std::move(arguments));
    const Step step = nextStep(call);
    switch (step.kind) {
    case Step::Kind::fail:
        errno = static_cast<int>(step.value);
        return failure;
    case Step::Kind::result:
        if constexpr (std::is_pointer_v<Result>) {
            return failure;
        } else {
            return static_cast<Result>(step.value);
        }
    case Step::Kind::limit:
        return limited(std::min(bytes, static_cast<std::size_t>(step.value)));
    case Step::Kind::pass:
        break;
    }
    return limited(bytes);
}

template<typename Result, typename Usual>
Result replaced(const char* call, std::string arguments, Result failure, Usual usual)
{
    return replacedMoving(call, std::move(arguments), failure, 0, [&](std::size_t) { return usual(); });
}
