// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/HeldFile.h"

#include <cstdint>
#include <optional>

// What the last four bytes of a file that gzip made say of the size of what it holds, cut to 32 bits. Of several such
// files behind each other they tell of the last alone. Nothing if they cannot be read.
[[nodiscard]] std::optional<std::uint32_t> sizeInGzipTrailer(const HeldFile& file);
