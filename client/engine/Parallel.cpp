// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/engine/Parallel.h"

#include <algorithm>
#include <vector>

namespace
{

struct Shared {
    EventLoop& loop;
    std::size_t count;
    std::function<Task<void>(std::size_t)> work; // kept here: a piece may use what it captured until it ends
    std::size_t next = 0;
    std::size_t running = 0;
    std::exception_ptr error = nullptr;
    std::coroutine_handle<> waiting = nullptr;
};

struct AllDone {
    Shared& shared;
    [[nodiscard]] bool await_ready() const noexcept { return shared.running == 0; }
    void await_suspend(std::coroutine_handle<> handle) const noexcept { shared.waiting = handle; }
    void await_resume() const noexcept {}
};

// An error must not end the lane, which has the other pieces to do.
Task<void> doOne(Shared& shared, std::size_t index)
{
    try {
        co_await shared.work(index);
    } catch (...) {
        if (!shared.error) {
            shared.error = std::current_exception();
        }
    }
}

Task<void> lane(Shared& shared)
{
    while (shared.next < shared.count) {
        co_await doOne(shared, shared.next++);
    }
    --shared.running;
    if (shared.running == 0 && shared.waiting) {
        shared.loop.post(shared.waiting); // it destroys the lanes, so it must not run inside one
    }
}

} // namespace

Task<void> inParallel(EventLoop& loop, std::size_t count, std::size_t limit,
                      std::function<Task<void>(std::size_t)> work)
{
    Shared shared{.loop = loop, .count = count, .work = std::move(work)};
    std::vector<Task<void>> lanes;
    shared.running = std::clamp<std::size_t>(limit, 1, std::max<std::size_t>(count, 1));
    for (std::size_t number = shared.running; number > 0; --number) {
        lanes.push_back(lane(shared));
    }
    for (Task<void>& one : lanes) {
        one.start();
    }
    const AllDone allDone{shared};
    co_await allDone;
    if (shared.error) {
        std::rethrow_exception(shared.error);
    }
}
