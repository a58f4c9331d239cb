// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// What the user can do about a failure. Who finds it out knows the remedy; how it is typed stands in one table.
enum class Remedy {
    goOnAllTheSame,
    believeGroups,
    leaveOutProbe,
    chooseInterface,
    waitLonger,
    readTime,
    setAddress,
    rescueAddress,
};

// As it is typed: an option, or a command with its name in front, such as "tarvelctl time get".
[[nodiscard]] std::string_view wordOf(Remedy remedy);
