// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Session.h"
#include "sim/uci/Target.h"

#include <string>

// The commands about one section or option. They return what they print, and throw UciError when they fail.

// Of a whole configuration: nothing, and no failure.
std::string get(const Session& session, const Target& target);

// An empty value deletes. What would change nothing stages nothing.
std::string set(const Session& session, const Target& target);

std::string remove(const Session& session, const Target& target);
std::string revert(const Session& session, const Target& target);
