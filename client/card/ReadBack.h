// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/model/Failure.h"

#include <functional>
#include <optional>
#include <string>

// A change that a card did not confirm may be done all the same: only what the card tells afterwards shows it.

// What ended the work; nothing if it is done.
Task<std::optional<Failure>> failureOf(Task<void> work);

// Asks a card that may still be at work, or restarting, until it answers, be it with a refusal or with nonsense, or the
// time is over. What is wrong with the last answer; nothing if it was one.
Task<std::optional<Failure>> readBack(EventLoop& loop, TimePoint end, std::function<Task<void>()> ask);

// The failure of a change, if the question what became of it failed, too.
[[nodiscard]] Failure unread(Failure failure, const Failure& cause);
// The failure of a change after which a card was told, for a reason that is not the card's answer to it.
[[nodiscard]] Failure unknownOutcome(const std::string& what, Failure cause);
