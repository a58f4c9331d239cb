// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/PackedBytes.h"

#include <algorithm>

namespace
{

constexpr std::uint64_t digits = 0x7F; // of a number in each byte, the least first
constexpr std::uint64_t goesOn = 0x80;

} // namespace

void PackedBytes::putNumber(std::uint64_t number)
{
    for (; number > digits; number >>= 7) {
        bytes.push_back(static_cast<char>((number & digits) | goesOn));
    }
    bytes.push_back(static_cast<char>(number));
}

void PackedBytes::putText(const std::string& before, const std::string& text)
{
    const auto rest = std::mismatch(text.begin(), text.end(), before.begin(), before.end()).first;
    putNumber(static_cast<std::uint64_t>(rest - text.begin()));
    putNumber(static_cast<std::uint64_t>(text.end() - rest));
    bytes.insert(bytes.end(), rest, text.end());
}

PackedBytes::Reader::Reader(const PackedBytes& packed, std::size_t start)
    : at(packed.bytes.begin() + static_cast<std::ptrdiff_t>(start))
{
}

std::uint64_t PackedBytes::Reader::number()
{
    std::uint64_t result = 0;
    std::uint64_t byte = goesOn;
    for (unsigned shift = 0; (byte & goesOn) != 0; shift += 7) {
        byte = static_cast<unsigned char>(*at++);
        result |= (byte & digits) << shift;
    }
    return result;
}

void PackedBytes::Reader::text(std::string& before)
{
    before.resize(static_cast<std::size_t>(number()));
    const auto end = at + static_cast<std::ptrdiff_t>(number());
    before.append(at, end);
    at = end;
}
