// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Session.h"
#include "sim/uci/Target.h"

#include <string>

// The commands about one configuration. They return what they print, and throw UciError when they fail.

std::string show(const Session& session, const Target& target);

// These two are about the whole configuration, whatever the key names in it.
std::string changes(const Session& session, const Target& target);
std::string commit(const Session& session, const Target& target);
