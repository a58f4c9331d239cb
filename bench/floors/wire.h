// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// The frames of the protocol, byte by byte, as both floors need them.

#include <stdint.h>

enum { headerSize = 20, countSize = 4, lengthOffset = 16 };
enum { success = 1, failure = 2, unknownCommand = 6 };

// Fills `reply` with the header of the answer to `request`; with `payload` bytes to follow it announces an 8-bit
// section.
void fillReply(uint8_t* reply, const uint8_t* request, uint8_t status, uint32_t payload);

uint16_t commandOf(const uint8_t* header);

void writeLittle32(uint8_t* bytes, uint32_t value);
uint32_t readLittle32(const uint8_t* bytes);
