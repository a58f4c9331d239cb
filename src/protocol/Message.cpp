// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/Message.h"

#include "protocol/TextSection.h"
#include "util/BoundedText.h"

std::uint32_t Message::setText(std::span<char> buffer, std::string_view text)
{
    const std::size_t kept = copyText(buffer, text);
    section8 = {textCount(kept), buffer.data()};
    return textSectionSize(kept);
}

void swapSections(Message& message)
{
    const std::uint8_t format = message.header.messageFormat;
    if ((format & section64Bit) != 0) {
        convertWords64(message.section64.data, message.section64.count / 8);
        convertWords32(&message.section64.count, 1);
    }
    if ((format & section32Bit) != 0) {
        convertWords32(message.section32.data, message.section32.count / 4);
        convertWords32(&message.section32.count, 1);
    }
    if ((format & section16Bit) != 0) {
        convertWords16(message.section16.data, message.section16.count / 2);
        convertWords32(&message.section16.count, 1);
    }
    if ((format & section8Bit) != 0) {
        convertWords32(&message.section8.count, 1);
    }
}
