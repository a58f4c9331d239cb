// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Command.h"

#include <memory>

// One maker per command, each defined at the end of the command's own file; the table of commands is their only user.
std::unique_ptr<Command> makeVersions();
