// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// Whether the text can be an address or the name of a host, and nothing that a shell or the settings tool takes for
// more: letters, digits, dots, colons, underscores and hyphens, at least one, and the first no hyphen.
[[nodiscard]] bool isPlainHost(std::string_view text);
