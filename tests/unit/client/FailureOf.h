// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Failure.h"

// How the work failed; a failure with exit code `ok` if it did not.
template<typename Work>
Failure failureOf(Work work)
{
    try {
        work();
    } catch (const Failure& failure) {
        return failure;
    }
    return {ExitCode::ok, Category::none, {}, {}};
}
