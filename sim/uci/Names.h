// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// Letters, digits and '_': what sections and options may be called.
bool isName(std::string_view text);

// Names of configuration files: any visible character but those that stand for something else in a key or a path.
bool isConfigName(std::string_view text);

// Section types: any visible character.
bool isTypeName(std::string_view text);

// Values on the command line: no control characters but tabs and line ends.
bool isText(std::string_view text);
