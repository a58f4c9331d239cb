// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/TextSection.h"

#include <algorithm>
#include <cstring>

bool writeTextSection(std::span<std::byte> bytes, std::string_view text, CountOrder order)
{
    if (text.size() >= bytes.size() || bytes.size() < textSectionSize(text.size())) {
        return false;
    }
    std::uint32_t count = textCount(text.size());
    if (order == CountOrder::wire) {
        convertWords32(&count, 1);
    }
    std::memcpy(bytes.data(), &count, sectionCountSize);
    std::byte* content = bytes.data() + sectionCountSize;
    std::memcpy(content, text.data(), text.size());
    content[text.size()] = std::byte{0};
    return true;
}

std::string_view readTextSection(std::span<const std::byte> bytes, CountOrder order)
{
    if (bytes.size() < sectionCountSize) {
        return {};
    }
    std::uint32_t count = 0;
    std::memcpy(&count, bytes.data(), sectionCountSize);
    if (order == CountOrder::wire) {
        convertWords32(&count, 1);
    }
    const std::span<const std::byte> content = bytes.subspan(sectionCountSize);
    return {reinterpret_cast<const char*>(content.data()), std::min<std::size_t>(count, content.size())};
}
