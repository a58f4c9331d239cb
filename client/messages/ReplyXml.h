// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/xml/XmlElement.h"

#include <optional>
#include <string>

// The document that a card wrote; nothing if it is none. A card escapes nothing, so an & stands for itself, and such a
// text is no XML.
[[nodiscard]] std::optional<XmlElement> parseReplyXml(const std::string& text);
