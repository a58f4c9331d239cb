// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/decode/Dissection.h"

#include "client/decode/Meanings.h"
#include "client/wire/HexText.h"
#include "client/xml/XmlElement.h"
#include "protocol/MessageHeader.h"

#include <algorithm>
#include <array>
#include <fmt/core.h>

namespace
{

constexpr std::size_t mostBytesShown = 64; // of a section that is no text, such as an archive

struct SectionKind {
    std::uint8_t formatBit;
    std::string_view name;
};

// As they travel, which is not the order of their bits.
constexpr std::array<SectionKind, 4> sectionsInOrder = {{
    {section64Bit, "64-bit section"},
    {section32Bit, "32-bit section"},
    {section16Bit, "16-bit section"},
    {section8Bit, "8-bit section"},
}};

bool isTextLetter(std::byte letter)
{
    const auto code = std::to_integer<unsigned char>(letter);
    return (code >= 0x20 && code != 0x7F) || code == '\t' || code == '\n' || code == '\r';
}

class Dissector
{
public:
    Dissector(std::span<const std::byte> bytes, std::size_t newOffset) : rest(bytes), offset(newOffset)
    {
        dissection.result.listName = "fields";
    }

    Dissection run()
    {
        if (rest.size() < headerSize) {
            row("bytes", hexText(rest), "");
            fail(fmt::format("{} bytes are no message: the header alone has {}", rest.size(), headerSize));
            advance(rest.size());
            return std::move(dissection);
        }
        const MessageHeader header = decodeHeader(rest.first<headerSize>());
        showHeader(header);
        advance(headerSize);
        showPayload(header);
        return std::move(dissection);
    }

private:
    void row(std::string field, std::string value, std::string meaning, std::size_t at = 0)
    {
        dissection.result.list.push_back({{"offset", static_cast<std::int64_t>(offset + at)},
                                          {"field", std::move(field)},
                                          {"value", std::move(value)},
                                          {"meaning", meaning.empty() ? Cell() : Cell(std::move(meaning))}});
    }

    // The first thing that is wrong is the one to tell; the others mostly follow from it.
    void fail(std::string hint)
    {
        if (dissection.result.ok()) {
            Failure failure = garbage(std::move(hint));
            failure.phase = "decoding";
            dissection.result.fail(std::move(failure));
        }
    }

    void advance(std::size_t count)
    {
        rest = rest.subspan(count);
        offset += count;
        dissection.length += count;
    }

    void showHeader(const MessageHeader& header)
    {
        const bool known = header.startPattern == headerStartPattern;
        row("start pattern", fmt::format("0x{:08x}", header.startPattern), known ? "" : "should be 0xff9ac381", 0);
        row("version", std::to_string(header.version), expectedValue(header.version, protocolVersion), 4);
        row("message format", fmt::format("0x{:02x}", header.messageFormat), meaningOfFormat(header.messageFormat), 5);
        row("device", std::to_string(header.device), expectedValue(header.device, cardDevice), 6);
        row("service", std::to_string(header.service), expectedValue(header.service, cardService), 7);
        row("command", std::to_string(header.commandId & ~replyFlag), meaningOfCommand(header.commandId), 8);
        row("status", std::to_string(header.status), meaningOfStatus(header), 10);
        row("command version", std::to_string(header.commandVersion), "", 11);
        row("sequence", fmt::format("0x{:08x}", header.sequenceId), "", 12);
        row("payload length", std::to_string(header.payloadLength), "", 16);
        if (!known) {
            fail("this does not start like a message: the bytes 81 c3 9a ff are missing");
        }
    }

    void showPayload(const MessageHeader& header)
    {
        std::size_t announced = header.payloadLength;
        if (announced > rest.size()) {
            fail(
                fmt::format("the header announces {} bytes of payload, but only {} are there", announced, rest.size()));
            // What is there is shown all the same: somebody wants to know where it broke off.
            announced = rest.size();
        }
        const std::size_t end = offset + announced;
        for (const SectionKind& kind : sectionsInOrder) {
            if ((header.messageFormat & kind.formatBit) != 0) {
                showSection(kind, end);
            }
        }
        if (offset < end) {
            row("surplus", hexText(rest.first(end - offset), mostBytesShown), "in no section");
            fail(fmt::format("{} bytes of the payload are in no section", end - offset));
            advance(end - offset);
        }
    }

    void showSection(const SectionKind& kind, std::size_t end)
    {
        if (end - offset < sectionCountSize) {
            fail(fmt::format("the count of the {} is missing", kind.name));
            return;
        }
        std::size_t count = readLittle32(rest.first<sectionCountSize>());
        row(fmt::format("{} count", kind.name), std::to_string(count), "bytes");
        advance(sectionCountSize);
        if (count > end - offset) {
            fail(fmt::format("the {} announces {} bytes, but only {} are there", kind.name, count, end - offset));
            count = end - offset;
        }
        showData(kind, rest.first(count));
        advance(count);
    }

    void showData(const SectionKind& kind, std::span<const std::byte> data)
    {
        const auto ending = std::find(data.begin(), data.end(), std::byte{0});
        const std::span<const std::byte> text(data.begin(), ending);
        // A text with more than its one NUL behind it is shown as bytes, or nobody would see what is there.
        if (kind.formatBit == section8Bit && !text.empty() && std::all_of(text.begin(), text.end(), isTextLetter) &&
            data.size() - text.size() <= 1) {
            showText({reinterpret_cast<const char*>(text.data()), text.size()}, text.size() < data.size());
        } else if (!data.empty()) {
            row(std::string(kind.name), hexText(data, mostBytesShown), "");
        }
    }

    void showText(std::string text, bool ended)
    {
        const bool xml = parseXml(text).has_value();
        row("text", std::move(text),
            fmt::format("{}{}", xml ? "XML" : "no valid XML", ended ? "" : ", not ended by a NUL"));
    }

    std::span<const std::byte> rest;
    std::size_t offset;
    Dissection dissection;
};

} // namespace

Dissection dissect(std::span<const std::byte> bytes, std::size_t offset)
{
    return Dissector(bytes, offset).run();
}
