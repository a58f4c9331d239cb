// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"

#include <coroutine>
#include <cstddef>
#include <deque>
#include <utility>

// A number of places for work that must not be done by all at the same time. Who comes first is served first:
//     const Slots::Held slot = co_await slots;
class Slots
{
public:
    // A place that is taken as long as this lives.
    class [[nodiscard]] Held
    {
    public:
        explicit Held(Slots& newSlots) : slots(&newSlots) {}
        Held(Held&& other) noexcept : slots(std::exchange(other.slots, nullptr)) {}
        Held& operator=(Held&&) = delete;
        ~Held()
        {
            if (slots != nullptr) {
                slots->release();
            }
        }

    private:
        Slots* slots;
    };

    Slots(EventLoop& newLoop, std::size_t number) : loop(newLoop), free(number) {}

    [[nodiscard]] bool await_ready() noexcept
    {
        if (free == 0) {
            return false;
        }
        --free;
        return true;
    }
    void await_suspend(std::coroutine_handle<> handle) { waiting.push_back(handle); }
    Held await_resume() { return Held(*this); }

private:
    // The place goes straight to whoever waits longest: free again for a moment, somebody who comes then would take it.
    // Posted, because this runs in a destructor, in the middle of what the former holder does.
    void release()
    {
        if (waiting.empty()) {
            ++free;
        } else {
            loop.post(waiting.front());
            waiting.pop_front();
        }
    }

    EventLoop& loop;
    std::size_t free;
    std::deque<std::coroutine_handle<>> waiting;
};
