// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/CardState.h"

std::string_view wordsOf(CardState state)
{
    switch (state) {
    case CardState::upAndIdle:
        return "up and idle";
    case CardState::up:
        return "up";
    case CardState::busy:
        return "busy";
    case CardState::strange:
        return "strange";
    case CardState::daemonDown:
        return "daemon down";
    case CardState::noConnection:
        return "no connection";
    case CardState::unreachable:
        return "unreachable";
    case CardState::noAddress:
        return "no address";
    case CardState::notFound:
        return "not found";
    }
    return {};
}

bool isDown(CardState state)
{
    return state == CardState::daemonDown || state == CardState::noConnection || state == CardState::unreachable ||
           state == CardState::notFound;
}

CardState stateOf(const Failure& failure)
{
    // By its category where the exit code says less: all of these are `unreachable`.
    if (failure.category == Category::refused) {
        return CardState::daemonDown;
    }
    if (failure.category == Category::connectTimeout) {
        return CardState::noConnection;
    }
    if (failure.category == Category::noAddress) {
        return CardState::noAddress;
    }
    // It took the connection, so it is there, and at work for somebody.
    if (failure.code == ExitCode::noAnswer) {
        return CardState::busy;
    }
    return failure.code == ExitCode::unreachable ? CardState::unreachable : CardState::strange;
}

CardState stateOf(PortState port)
{
    if (port == PortState::open) {
        return CardState::up;
    }
    return port == PortState::closed ? CardState::daemonDown : CardState::noConnection;
}
