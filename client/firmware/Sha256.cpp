// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Sha256.h"

#include <algorithm>
#include <bit>
#include <fmt/core.h>

namespace
{

constexpr std::array<std::uint32_t, 64> roundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

// Constants, because the C++ libraries differ on whether a rotation counts in signed or unsigned numbers.
template<int first, int second, int third>
std::uint32_t mix(std::uint32_t word)
{
    return std::rotr(word, first) ^ std::rotr(word, second) ^ std::rotr(word, third);
}

std::uint32_t bigEndianWord(const std::byte* bytes)
{
    return std::to_integer<std::uint32_t>(bytes[0]) << 24 | std::to_integer<std::uint32_t>(bytes[1]) << 16 |
           std::to_integer<std::uint32_t>(bytes[2]) << 8 | std::to_integer<std::uint32_t>(bytes[3]);
}

std::array<std::uint32_t, 64> schedule(std::span<const std::byte, 64> block)
{
    std::array<std::uint32_t, 64> words = {};
    for (std::size_t i = 0; i < 16; ++i) {
        words[i] = bigEndianWord(block.data() + 4 * i);
    }
    for (std::size_t i = 16; i < words.size(); ++i) {
        const std::uint32_t early = words[i - 15];
        const std::uint32_t late = words[i - 2];
        const std::uint32_t first = std::rotr(early, 7) ^ std::rotr(early, 18) ^ early >> 3;
        const std::uint32_t second = std::rotr(late, 17) ^ std::rotr(late, 19) ^ late >> 10;
        words[i] = words[i - 16] + first + words[i - 7] + second;
    }
    return words;
}

} // namespace

void Sha256::add(std::span<const std::byte> bytes)
{
    length += bytes.size();
    if (filled > 0) {
        bytes = bytes.subspan(fillBlock(bytes));
    }
    while (bytes.size() >= blockSize) { // most of a file is never copied
        compress(bytes.first<blockSize>());
        bytes = bytes.subspan(blockSize);
    }
    fillBlock(bytes);
}

// Returns how many of the bytes went into the block; a full one is worked off.
std::size_t Sha256::fillBlock(std::span<const std::byte> bytes)
{
    const std::size_t taken = std::min(bytes.size(), blockSize - filled);
    std::ranges::copy(bytes.first(taken), block.begin() + static_cast<std::ptrdiff_t>(filled));
    filled += taken;
    if (filled == blockSize) {
        compress(block);
        filled = 0;
    }
    return taken;
}

void Sha256::compress(std::span<const std::byte, blockSize> bytes)
{
    const std::array<std::uint32_t, 64> words = schedule(bytes);
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::uint32_t first = h + mix<6, 11, 25>(e) + ((e & f) ^ (~e & g)) + roundConstants[i] + words[i];
        const std::uint32_t second = mix<2, 13, 22>(a) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const Sha256Sum worked = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i) {
        state[i] += worked[i];
    }
}

Sha256Sum Sha256::finish()
{
    // Before the padding, which add() counts like all else.
    std::array<std::byte, sizeof length> bits = {};
    for (std::size_t i = 0; i < bits.size(); ++i) {
        bits[i] = static_cast<std::byte>(length * 8 >> (56 - 8 * i));
    }
    constexpr std::array<std::byte, blockSize> padding = {std::byte{0x80}};
    constexpr std::size_t end = blockSize - sizeof length; // of a block, where the length stands
    add(std::span(padding).first((filled < end ? end : end + blockSize) - filled));
    add(bits);
    return state;
}

std::string inHexadecimal(const Sha256Sum& sum)
{
    std::string digits;
    for (const std::uint32_t word : sum) {
        digits += fmt::format("{:08x}", word);
    }
    return digits;
}
