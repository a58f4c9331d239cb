// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// "tarvelctl 1.0.0", with the version of the project.
[[nodiscard]] std::string_view programVersion();
