// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/TextList.h"

namespace
{

constexpr std::uint32_t together = 16; // chosen: the first of so many is kept whole

} // namespace

std::uint32_t TextList::add(const std::string& text)
{
    if (count % together == 0) {
        starts.push_back(bytes.size());
        last.clear();
    }
    bytes.putText(last, text);
    last = text;
    return count++;
}

std::string TextList::at(std::uint32_t number) const
{
    PackedBytes::Reader reader(bytes, starts[number / together]);
    std::string text;
    for (std::uint32_t left = number % together + 1; left > 0; --left) {
        reader.text(text);
    }
    return text;
}
