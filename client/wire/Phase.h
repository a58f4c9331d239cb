// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/model/Failure.h"

#include <concepts>
#include <string>
#include <type_traits>
#include <utility>

// Names what was being done in the failures that do not know it: a socket learns that no answer came, and only whoever
// asked knows to what. A phase that a failure has already is nearer to the cause, and stays.
template<typename T>
Task<T> inPhase(std::string phase, Task<T> work)
{
    try {
        if constexpr (std::is_void_v<T>) {
            co_await work;
        } else {
            T result = co_await work;
            co_return result;
        }
    } catch (Failure& failure) {
        if (failure.phase.empty()) {
            failure.phase = phase;
        }
        throw;
    }
}

// The same for work that does not wait.
template<std::invocable Work>
auto inPhase(const std::string& phase, const Work& work)
{
    try {
        return work();
    } catch (Failure& failure) {
        if (failure.phase.empty()) {
            failure.phase = phase;
        }
        throw;
    }
}
