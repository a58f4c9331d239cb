// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <string_view>

// Letters, digits and '_': what sections and options may be called.
bool isName(std::string_view text);

// Names of configuration files may also have '-'.
bool isConfigName(std::string_view text);

// Section types: any visible character.
bool isTypeName(std::string_view text);

// How a section is addressed: by name or as "@type[i]".
bool isSectionSelector(std::string_view text);
