// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// How the tool is called: 35 lines, as many as today's real one prints.
extern const char* const usage;
