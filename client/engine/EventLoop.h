// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"

#include <chrono>
#include <coroutine>
#include <functional>
#include <poll.h>
#include <vector>

// Monotonic, so that somebody who sets the clock of this machine moves no deadline.
using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;
using Seconds = std::chrono::duration<double>;

[[nodiscard]] TimePoint after(Seconds delay);

// Thrown once out of every wait of the moment when the user presses Ctrl-C. Later waits work again, so that work which
// must leave a card in a known state can finish; a second Ctrl-C ends the program at once.
// It is no Failure, so that whoever gets over those does not get over this.
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

    // What to await. TimePoint::max() is no deadline. `ready` waits for the events that each entry names, until() for
    // nothing but the moment; that the peer has closed its side, or an error, counts as ready, too.
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

    // Readable when the user wants to stop (see InterruptSource), and read empty then; -1 for none.
    void setInterruptDescriptor(int descriptor) { interruptDescriptor = descriptor; }
    // Ends all waits of the moment with Interrupted, as Ctrl-C does.
    void interrupt();
    // From now on this is called now and then, with such pauses at least, while anything waits.
    void setTicker(Seconds pause, std::function<void()> newTicker);

    // For long work that does not wait: lets the ticker tick, and throws Interrupted if the user wants to stop.
    void takeInterrupt();
    // For a question to the user: nothing else goes on until the descriptor is readable. Throws Interrupted likewise.
    void standStillUntilReadable(int descriptor);
    [[nodiscard]] bool wasInterrupted() const { return interruptedOnce; }
    // For work that has not begun when the user wants to stop: its waits would be later ones.
    void refuseAfterInterrupt() const;

private:
    void turn();
    void tick();
    void pollOnce();
    void takeSignals() const;
    void resumeEnded();
    [[nodiscard]] int timeoutMilliseconds() const;
    std::vector<pollfd> collectDescriptors() const;
    void noteReady(const std::vector<pollfd>& polled);
    void forget(const Wait* wait);

    std::vector<Wait*> waits;
    std::vector<std::coroutine_handle<>> posted;
    std::function<void()> ticker;
    Seconds tickPause{0};
    TimePoint nextTick = TimePoint::max();
    int interruptDescriptor = -1;
    bool interruptedOnce = false;
};
