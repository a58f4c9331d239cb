// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/ReplyXml.h"

std::optional<XmlElement> parseReplyXml(const std::string& text)
{
    return text.find('&') == std::string::npos ? parseXml(text) : std::nullopt;
}
