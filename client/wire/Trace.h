// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Frame.h"

#include <span>
#include <string>

class Console;

// "c4 81 9a ..." in groups of four bytes; a long frame is cut after `most` bytes and its length told.
[[nodiscard]] std::string hexText(std::span<const std::byte> bytes, std::size_t most = SIZE_MAX);

// Shows a frame under --verbose: "10.0.0.11 <- 25 bytes: ..." for what is sent, "->" for what came.
void traceSent(const Console& console, const std::string& peer, std::span<const std::byte> bytes);
void traceReceived(const Console& console, const std::string& peer, std::span<const std::byte> bytes);
