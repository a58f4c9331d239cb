// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

// Numbers and texts one behind the other, in little room.
class PackedBytes
{
public:
    void putNumber(std::uint64_t number);
    // Without what it has in common with the text before it.
    void putText(const std::string& before, const std::string& text);

    [[nodiscard]] std::size_t size() const { return bytes.size(); }

    // Takes them in the order in which they were put. Trusts the bytes, which nobody else has written.
    class Reader
    {
    public:
        Reader(const PackedBytes& packed, std::size_t start);

        std::uint64_t number();
        void text(std::string& before); // makes the text before it this one

    private:
        std::deque<char>::const_iterator at;
    };

private:
    std::deque<char> bytes; // grows without being copied
};
