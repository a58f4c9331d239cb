// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

// "c4 81 9a ..." in groups of four bytes; a long frame is cut after `most` bytes and its length told.
[[nodiscard]] std::string hexText(std::span<const std::byte> bytes, std::size_t most = SIZE_MAX);
