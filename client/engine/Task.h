// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

// A piece of work that waits: what each command does for one target, written as one straight function although the
// one event loop serves all targets in turns. A task starts when it is awaited (or by start()), runs until it waits,
// and is continued by the event loop. It carries its result, or the exception that ended it, to whoever awaits it.
//
// Parameters of a coroutine are taken by value, or by reference to something that outlives the whole run.
//
// Give what co_await brings, and what it needs, a name. gcc 12 accepts all of these without a warning and makes code of
// them that destroys something twice, or aborts: `if (co_await x)`, `c ? co_await a : b`, and a temporary aggregate in
// the same statement, such as `co_await ask(Endpoint{text})`, or a closure that captures a text by value. A temporary
// with a constructor is safe. tools/check_style.py refuses what it can see; `Endpoint(text)` it cannot tell from a
// call.
template<typename T>
class Task;

// What both kinds of promise share: whoever awaits the task continues as soon as it ends.
class TaskPromiseBase
{
public:
    std::coroutine_handle<> continuation;
    std::exception_ptr error;

    // A task that ran before anybody has its handle could end before it can be awaited.
    [[nodiscard]] std::suspend_always initial_suspend() const noexcept { return {}; }
    void unhandled_exception() noexcept { error = std::current_exception(); }

    // Who awaits is continued by a jump, not by a call: a thousand tasks that end without waiting need no deeper stack.
    // The frame stays, since the result is in it; the Task destroys it.
    struct Continue {
        [[nodiscard]] bool await_ready() const noexcept { return false; }
        template<typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> ended) const noexcept
        {
            const std::coroutine_handle<> next = ended.promise().continuation;
            return next ? next : std::noop_coroutine();
        }
        void await_resume() const noexcept {}
    };
    [[nodiscard]] Continue final_suspend() const noexcept { return {}; }

protected:
    void rethrowError() const
    {
        if (error) {
            std::rethrow_exception(error);
        }
    }
};

template<typename T>
class TaskPromise : public TaskPromiseBase
{
public:
    Task<T> get_return_object();
    void return_value(T result) { value = std::move(result); }
    T take()
    {
        rethrowError();
        return std::move(*value);
    }

private:
    std::optional<T> value;
};

template<>
class TaskPromise<void> : public TaskPromiseBase
{
public:
    Task<void> get_return_object();
    void return_void() const noexcept {}
    void take() const { rethrowError(); }
};

template<typename T>
class [[nodiscard]] Task
{
public:
    using promise_type = TaskPromise<T>;
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(Handle newHandle) : handle(newHandle) {}
    Task(Task&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    Task& operator=(Task&& other) noexcept
    {
        std::swap(handle, other.handle);
        return *this;
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    ~Task()
    {
        if (handle) {
            handle.destroy();
        }
    }

    // For the outermost task, which nobody awaits.
    void start() { handle.resume(); }
    [[nodiscard]] bool done() const { return handle.done(); }
    T result() { return handle.promise().take(); }

    [[nodiscard]] bool await_ready() const noexcept { return false; }
    Handle await_suspend(std::coroutine_handle<> awaiting) noexcept
    {
        handle.promise().continuation = awaiting;
        return handle;
    }
    T await_resume() { return handle.promise().take(); }

private:
    Handle handle;
};

template<typename T>
Task<T> TaskPromise<T>::get_return_object()
{
    return Task<T>(Task<T>::Handle::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object()
{
    return Task<void>(Task<void>::Handle::from_promise(*this));
}
