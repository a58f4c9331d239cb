// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"

#include <chrono>
#include <coroutine>
#include <poll.h>
#include <vector>

using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;
using Seconds = std::chrono::duration<double>;

[[nodiscard]] inline TimePoint after(Seconds delay)
{
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(delay);
}

// Thrown out of a wait when the user pressed Ctrl-C. Later waits work again, so that work which must leave a card in
// a known state can finish; a second Ctrl-C ends the program at once.
struct Interrupted {
};

// One poll() loop for all targets and timers. Work waits in it by
//     const bool ready = co_await loop.readable(descriptor, deadline);
class EventLoop
{
public:
    // One suspended wait, for any of some descriptors or for a moment. Lives in the frame of the waiting coroutine
    // and forgets itself when that is destroyed.
    class [[nodiscard]] Wait
    {
    public:
        Wait(EventLoop& newLoop, std::vector<pollfd> newDescriptors, TimePoint newDeadline);
        ~Wait();
        Wait(const Wait&) = delete;
        Wait& operator=(const Wait&) = delete;

        [[nodiscard]] bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> waiting);
        // True: a descriptor is ready (or in error). False: the deadline has passed.
        bool await_resume() const;

    private:
        friend class EventLoop;
        enum class End { none, ready, deadline, interrupted };

        EventLoop& loop;
        std::vector<pollfd> descriptors;
        TimePoint deadline;
        std::coroutine_handle<> handle;
        End end = End::none;
    };

    [[nodiscard]] Wait readable(int descriptor, TimePoint deadline);
    [[nodiscard]] Wait writable(int descriptor, TimePoint deadline);
    [[nodiscard]] Wait anyReadable(const std::vector<int>& descriptors, TimePoint deadline);
    [[nodiscard]] Wait ready(std::vector<pollfd> descriptors, TimePoint deadline);
    [[nodiscard]] Wait until(TimePoint moment);

    // Continues a coroutine from the loop instead of from inside another one.
    void post(std::coroutine_handle<> handle) { posted.push_back(handle); }

    // Starts the task, serves all waits until it is done and returns its result.
    template<typename T>
    T run(Task<T> task)
    {
        task.start();
        while (!task.done()) {
            turn();
        }
        return task.result();
    }

    // Readable when the user wants to stop (see InterruptSource); -1 for none.
    void setInterruptDescriptor(int descriptor) { interruptDescriptor = descriptor; }
    void interrupt();
    [[nodiscard]] bool wasInterrupted() const { return interruptedOnce; }

private:
    void turn();
    void pollOnce();
    void resumeEnded();
    [[nodiscard]] int timeoutMilliseconds() const;
    std::vector<pollfd> collectDescriptors() const;
    void noteReady(const std::vector<pollfd>& polled);
    void forget(const Wait* wait);

    std::vector<Wait*> waits;
    std::vector<std::coroutine_handle<>> posted;
    int interruptDescriptor = -1;
    bool interruptedOnce = false;
};
