// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"

#include <coroutine>
#include <utility>
#include <vector>

// Something that happens once, for which others wait by
//     co_await signal;
// Those who come later do not wait. It must outlive those who wait.
class Signal
{
public:
    explicit Signal(EventLoop& newLoop) : loop(newLoop) {}

    void set()
    {
        isSet = true;
        // Posted, since whoever sets it is in the middle of something, and must not be destroyed there.
        for (const std::coroutine_handle<> handle : std::exchange(waiting, {})) {
            loop.post(handle);
        }
    }

    [[nodiscard]] bool await_ready() const noexcept { return isSet; }
    void await_suspend(std::coroutine_handle<> handle) { waiting.push_back(handle); }
    void await_resume() const noexcept {}

private:
    EventLoop& loop;
    std::vector<std::coroutine_handle<>> waiting;
    bool isSet = false;
};
