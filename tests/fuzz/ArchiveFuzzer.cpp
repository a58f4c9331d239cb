// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/FuzzedArchive.h"

#include "fuzz/CardFuzzer.h"

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    return muteProductionCode();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return feed(&FuzzedArchive::feedArchive, data, size);
}
