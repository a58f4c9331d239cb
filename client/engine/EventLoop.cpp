// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/engine/EventLoop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <unistd.h>
#include <utility>

TimePoint after(Seconds delay)
{
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(delay);
}

EventLoop::Wait::Wait(EventLoop& newLoop, std::vector<pollfd> newDescriptors, TimePoint newDeadline)
    : loop(newLoop), descriptors(std::move(newDescriptors)), deadline(newDeadline)
{
}

EventLoop::Wait::~Wait()
{
    loop.forget(this);
}

void EventLoop::Wait::await_suspend(std::coroutine_handle<> waiting)
{
    handle = waiting;
    loop.waits.push_back(this);
}

bool EventLoop::Wait::await_resume() const
{
    if (end == End::interrupted) {
        throw Interrupted();
    }
    return end == End::ready;
}

EventLoop::Wait EventLoop::readable(int descriptor, TimePoint deadline)
{
    return {*this, {{descriptor, POLLIN, 0}}, deadline};
}

EventLoop::Wait EventLoop::writable(int descriptor, TimePoint deadline)
{
    return {*this, {{descriptor, POLLOUT, 0}}, deadline};
}

EventLoop::Wait EventLoop::anyReadable(const std::vector<int>& descriptors, TimePoint deadline)
{
    std::vector<pollfd> polled;
    polled.reserve(descriptors.size());
    for (const int descriptor : descriptors) {
        polled.push_back({descriptor, POLLIN, 0});
    }
    return {*this, std::move(polled), deadline};
}

EventLoop::Wait EventLoop::ready(std::vector<pollfd> descriptors, TimePoint deadline)
{
    return {*this, std::move(descriptors), deadline};
}

EventLoop::Wait EventLoop::until(TimePoint moment)
{
    return {*this, {}, moment};
}

void EventLoop::interrupt()
{
    interruptedOnce = true;
    for (Wait* wait : waits) {
        wait->end = Wait::End::interrupted;
    }
}

void EventLoop::refuseAfterInterrupt() const
{
    if (interruptedOnce) {
        throw Interrupted();
    }
}

void EventLoop::setTicker(Seconds pause, std::function<void()> newTicker)
{
    ticker = std::move(newTicker);
    tickPause = pause;
    nextTick = after(pause);
}

void EventLoop::tick()
{
    if (Clock::now() >= nextTick) {
        ticker();
        nextTick = after(tickPause);
    }
}

void EventLoop::takeInterrupt()
{
    tick();
    pollfd signal = {interruptDescriptor, POLLIN, 0};
    if (::poll(&signal, 1, 0) == 1) {
        takeSignals();
        interrupt();
        throw Interrupted();
    }
}

void EventLoop::standStillUntilReadable(int descriptor)
{
    std::array<pollfd, 2> polled = {pollfd{interruptDescriptor, POLLIN, 0}, pollfd{descriptor, POLLIN, 0}};
    while (::poll(polled.data(), polled.size(), -1) == -1 && errno == EINTR) {
    }
    if (polled.front().revents != 0) {
        takeSignals();
        interrupt();
        throw Interrupted();
    }
}

void EventLoop::forget(const Wait* wait)
{
    std::erase(waits, wait);
}

// What is posted is work that nobody has to wait for: a poll before it could sleep for ever.
void EventLoop::turn()
{
    if (posted.empty()) {
        if (waits.empty()) { // poll() would sleep for ever
            throw std::logic_error("a task waits for nothing");
        }
        pollOnce();
        resumeEnded();
    }
    // Taken out first, because what is continued may post again, and so change the list; that is for the next turn.
    for (const std::coroutine_handle<> handle : std::exchange(posted, {})) {
        handle.resume();
    }
}

int EventLoop::timeoutMilliseconds() const
{
    TimePoint earliest = nextTick;
    for (const Wait* wait : waits) {
        earliest = std::min(earliest, wait->deadline);
    }
    if (earliest == TimePoint::max()) {
        return -1;
    }
    // Rounded up: a poll that ends just before the deadline would only spin.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(earliest - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, std::numeric_limits<int>::max()));
}

std::vector<pollfd> EventLoop::collectDescriptors() const
{
    std::vector<pollfd> polled = {{interruptDescriptor, POLLIN, 0}}; // poll() passes over -1
    for (const Wait* wait : waits) {
        polled.insert(polled.end(), wait->descriptors.begin(), wait->descriptors.end());
    }
    return polled;
}

void EventLoop::noteReady(const std::vector<pollfd>& polled)
{
    std::size_t next = 1; // behind the interrupt descriptor
    const TimePoint now = Clock::now();
    for (Wait* wait : waits) {
        const auto first = polled.begin() + static_cast<std::ptrdiff_t>(next);
        next += wait->descriptors.size();
        const auto last = polled.begin() + static_cast<std::ptrdiff_t>(next);
        // What came in time counts, even if a busy machine looks only after the deadline.
        if (std::any_of(first, last, [](const pollfd& one) { return one.revents != 0; })) {
            wait->end = Wait::End::ready;
        } else if (wait->deadline <= now) {
            wait->end = Wait::End::deadline;
        }
    }
}

// All waits are polled anew in each turn: they are at most a few for each target that is served at the same time. A
// list kept by the kernel, as for epoll, would have to be told of each wait that ends because its coroutine is
// destroyed.
void EventLoop::pollOnce()
{
    std::vector<pollfd> polled = collectDescriptors();
    // After EINTR no entry says anything, and the next turn polls again.
    if (::poll(polled.data(), polled.size(), timeoutMilliseconds()) == -1 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "poll");
    }
    tick();
    noteReady(polled);
    // Last, because it outweighs what has come: the work that waits is to end now.
    if (polled.front().revents != 0) {
        takeSignals();
        interrupt();
    }
}

// What stayed in the pipe would interrupt every later wait as well.
void EventLoop::takeSignals() const
{
    std::array<char, 64> signals = {};
    [[maybe_unused]] const ssize_t ignored = ::read(interruptDescriptor, signals.data(), signals.size());
}

// A continued coroutine may end waits of others by destroying them, so the list is looked at anew each time.
void EventLoop::resumeEnded()
{
    const auto hasEnded = [](const Wait* wait) { return wait->end != Wait::End::none; };
    for (auto ended = std::find_if(waits.begin(), waits.end(), hasEnded); ended != waits.end();
         ended = std::find_if(waits.begin(), waits.end(), hasEnded)) {
        const std::coroutine_handle<> handle = (*ended)->handle;
        waits.erase(ended);
        handle.resume();
    }
}
