// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// Appends ` Name="value"` with the value escaped for XML.
void appendAttribute(std::string& xml, std::string_view name, std::string_view value);
