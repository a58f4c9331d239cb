// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"

#include <cstddef>
#include <functional>

// Does work(0) ... work(count - 1), at most `limit` of them at the same time, and ends when all are done. Each piece
// starts as soon as another has ended, so that a slow one delays nobody but its own place. If pieces end with an
// exception, the first of them is thrown when all others are done.
Task<void> inParallel(EventLoop& loop, std::size_t count, std::size_t limit,
                      std::function<Task<void>(std::size_t)> work);
