// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Result.h"
#include "client/wire/Frame.h"

#include <span>

// A message taken apart: a row with offset, field, value and meaning for each field of the header and each section.
// What is wrong with it is the result's failure; the rows go as far as the bytes do.
struct Dissection {
    Result result;
    std::size_t length = 0; // of the message, so that what follows can be taken apart, too
};

// The offsets of the rows begin with `offset`. Takes any bytes.
[[nodiscard]] Dissection dissect(std::span<const std::byte> bytes, std::size_t offset = 0);
