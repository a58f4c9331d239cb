// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <span>
#include <string>

// As RFC 4648 defines it, with = at the end.
[[nodiscard]] std::string inBase64(std::span<const std::byte> bytes);
