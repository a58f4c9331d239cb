// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/Replies.h"

#include <algorithm>

namespace
{

// An empty payload, or one 8-bit section with a text that ends at its only NUL.
bool isWellFormed(std::span<const std::uint8_t> reply, const SampleHeader& header)
{
    constexpr std::size_t countSize = 4;
    const auto payload = reply.subspan(SampleHeader::size);
    if (payload.size() != header.payloadLength) {
        return false;
    }
    if (payload.empty()) {
        return header.messageFormat == 0;
    }
    if (header.messageFormat != 1 || payload.size() <= countSize) {
        return false;
    }
    const auto text = payload.subspan(countSize);
    const Bytes count = little32(static_cast<std::uint32_t>(text.size()));
    return std::ranges::equal(count, payload.first(countSize)) && std::ranges::find(text, 0) == text.end() - 1;
}

} // namespace

std::string objectionToReply(std::span<const std::uint8_t> reply, const SampleHeader& request,
                             const Expectation& expected)
{
    if (reply.size() < SampleHeader::size) {
        return "a reply without a whole header";
    }
    const SampleHeader header = SampleHeader::from(reply);
    if (!isWellFormed(reply, header)) {
        return "a reply that is not well-formed: " + hex(reply);
    }
    SampleHeader answer = replyTo(request, header.status);
    answer.messageFormat = header.messageFormat;
    answer.payloadLength = header.payloadLength;
    if (header != answer) {
        return "a reply to another request: " + hex(reply);
    }
    if (header.status < expected.firstStatus || header.status > expected.lastStatus) {
        return "a reply with a wrong status: " + hex(reply);
    }
    return {};
}
