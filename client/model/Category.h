// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// What kind of thing went wrong: one word for scripts, finer than the exit code.
enum class Category {
    none, // all is well
    ambiguous,
    badArchive,
    badFile,
    cannotKeepServer,
    closed,
    connectTimeout,
    differs,
    garbage,
    internal,
    interrupted,
    lost,
    needsForce,
    needsYes,
    noAddress,
    noInterface,
    noNetwork, // this machine has no way there
    noRoute,
    noSocket,
    notAsExpected,
    notBack,
    notFound,
    notHeard,
    notRescued,
    notTaken,
    refused,
    refusedByCard,
    rolledBack,
    stalled,
    stayedUp,
    timeout,
    tooFew,
    unchanged,
    unknownCommand,
    untouched,
    usage,
    wrongDevice,
    wrongService,
    wrongVersion,
};

[[nodiscard]] std::string_view wordOf(Category category); // such as "timeout"; empty for none
