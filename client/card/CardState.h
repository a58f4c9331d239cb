// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Failure.h"
#include "client/wire/TcpConnection.h"

#include <string_view>

// What a card is doing, as far as can be seen from here.
enum class CardState {
    upAndIdle,
    up, // it takes connections, and was asked nothing
    busy,
    strange, // it answers, but not as a card
    daemonDown,
    noConnection,
    unreachable,
    noAddress, // it is heard, but no connection leads to it
    notFound,  // by its name
};

[[nodiscard]] std::string_view wordsOf(CardState state); // such as "up and idle"

// Of no use to anybody who wants to reach it: a busy card is up, and so is one that makes no sense.
[[nodiscard]] bool isDown(CardState state);

// What it means that a card cannot be asked for its versions.
[[nodiscard]] CardState stateOf(const Failure& failure);

// What it means how its port takes a connection.
[[nodiscard]] CardState stateOf(PortState port);
