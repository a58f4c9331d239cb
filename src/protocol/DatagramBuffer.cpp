// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/DatagramBuffer.h"

#include "protocol/TextSection.h"

#include <algorithm>
#include <cstring>

namespace
{

std::uint32_t hostCount(std::span<const std::byte> bytes)
{
    std::uint32_t count = 0;
    std::memcpy(&count, bytes.data(), sectionCountSize);
    return count;
}

using ConvertElements = void (*)(void* data, std::size_t count);

void convertNothing(void* /*data*/, std::size_t /*count*/) {}

struct SectionKind {
    std::uint8_t formatBit;
    std::size_t elementSize;
    ConvertElements convert;
};

constexpr std::array<SectionKind, 4> sectionsInOrder = {{
    {section64Bit, 8, convertWords64},
    {section32Bit, 4, convertWords32},
    {section16Bit, 2, convertWords16},
    {section8Bit, 1, convertNothing},
}};

// `convertCount` converts the count in place and returns its value in host order.
template<typename ConvertCount>
void walkSections(std::uint8_t messageFormat, std::span<std::byte> rest, ConvertCount convertCount)
{
    for (const SectionKind& kind : sectionsInOrder) {
        if ((messageFormat & kind.formatBit) == 0) {
            continue;
        }
        if (rest.size() < sectionCountSize) {
            return;
        }
        const std::size_t count = convertCount(rest.first(sectionCountSize));
        rest = rest.subspan(sectionCountSize);
        if (count > rest.size()) {
            return;
        }
        // Bytes behind the last whole element stay as they are, and are passed over with the rest.
        kind.convert(rest.data(), count / kind.elementSize);
        rest = rest.subspan(count);
    }
}

} // namespace

void decodeDatagramSections(std::uint8_t messageFormat, std::span<std::byte> sections)
{
    walkSections(messageFormat, sections, [](std::span<std::byte> count) {
        convertWords32(count.data(), 1);
        return hostCount(count);
    });
}

void encodeDatagramSections(std::uint8_t messageFormat, std::span<std::byte> sections)
{
    walkSections(messageFormat, sections, [](std::span<std::byte> count) {
        const std::uint32_t value = hostCount(count);
        convertWords32(count.data(), 1);
        return value;
    });
}

std::span<std::byte> DatagramBuffer::sections()
{
    // What is shorter than a header has no sections, instead of a difference that wraps around.
    return std::span(storage).subspan(headerSize, std::max(length, headerSize) - headerSize);
}

std::string_view DatagramBuffer::text() const
{
    if (header().payloadLength == 0) {
        return {};
    }
    const std::span<const std::byte> came = std::span(storage).first(std::max(length, headerSize));
    return readTextSection(came.subspan(headerSize), CountOrder::host);
}

bool DatagramBuffer::setText(std::string_view text)
{
    if (!writeTextSection(std::span(storage).subspan(headerSize), text, CountOrder::host)) {
        return false;
    }
    length = headerSize + textSectionSize(text.size());
    return true;
}
