// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// An element with its attributes and the elements inside; texts between them do not matter to any message.
struct XmlElement {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<XmlElement> children;

    [[nodiscard]] std::optional<std::string> attribute(std::string_view wanted) const;
};

// The document as XML prescribes it; nothing if it is not well formed, has a document type, or is nested deeper than
// any message.
[[nodiscard]] std::optional<XmlElement> parseXml(const std::string& text);
