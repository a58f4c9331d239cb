// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

using Sha256Sum = std::array<std::uint32_t, 8>;

// As sha256sum writes it.
[[nodiscard]] std::string inHexadecimal(const Sha256Sum& sum);

// SHA-256 of bytes that come in pieces, as FIPS 180-4 defines it.
class Sha256
{
public:
    // Pieces of any length.
    void add(std::span<const std::byte> bytes);

    // The digest of all that was added. Nothing may be added afterwards.
    [[nodiscard]] Sha256Sum finish();

private:
    static constexpr std::size_t blockSize = 64;

    std::size_t fillBlock(std::span<const std::byte> bytes);
    void compress(std::span<const std::byte, blockSize> bytes);

    Sha256Sum state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<std::byte, blockSize> block = {};
    std::size_t filled = 0;
    std::uint64_t length = 0; // in bytes
};
