// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"

#include <filesystem>
#include <string>
#include <string_view>

// Where the program remembers things between its runs: $XDG_STATE_HOME/tarvelctl or ~/.local/state/tarvelctl; empty if
// there is neither.
[[nodiscard]] std::filesystem::path stateFolder();

// A card's name as one word of letters, digits and %xx, for a file's name or a line: the name itself may hold anything.
[[nodiscard]] std::string plainWord(std::string_view name);

// While it lives, no other run of the program has one: for those who add to what is remembered. Where the folder cannot
// be made or locked it does nothing.
class StateLock
{
public:
    StateLock();

private:
    Descriptor file;
};

// The file of the state folder gets this text, at once or not at all; false if that is impossible.
[[nodiscard]] bool replaceStateFile(const std::string& name, std::string_view text);
