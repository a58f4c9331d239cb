// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/CardState.h"

std::string_view stateOf(const Failure& failure)
{
    if (failure.category == Category::refused) {
        return daemonDown;
    }
    if (failure.category == Category::connectTimeout) {
        return noConnection;
    }
    if (failure.code == ExitCode::noAnswer) {
        return busy;
    }
    return failure.code == ExitCode::unreachable ? unreachable : strange;
}
