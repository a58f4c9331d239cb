// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "wire.h"

#include <string.h>

void fillReply(uint8_t* reply, const uint8_t* request, uint8_t status, uint32_t payload)
{
    const uint8_t start[] = {0x81, 0xC3, 0x9A, 0xFF, 1, payload > 0, 5, 4};
    uint8_t command[] = {request[8], request[9] | 0x80, status, 1};
    uint8_t sequence[4];
    memcpy(sequence, request + 12, sizeof sequence); // the reply may stand where the request does
    memcpy(reply, start, sizeof start);
    memcpy(reply + 8, command, sizeof command);
    memcpy(reply + 12, sequence, sizeof sequence);
    writeLittle32(reply + lengthOffset, payload);
}

uint16_t commandOf(const uint8_t* header)
{
    return (uint16_t)(header[8] | header[9] << 8);
}

void writeLittle32(uint8_t* bytes, uint32_t value)
{
    for (int i = 0; i < 4; ++i) {
        bytes[i] = (uint8_t)(value >> (8 * i));
    }
}

uint32_t readLittle32(const uint8_t* bytes)
{
    return bytes[0] | (uint32_t)bytes[1] << 8 | (uint32_t)bytes[2] << 16 | (uint32_t)bytes[3] << 24;
}
