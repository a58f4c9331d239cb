// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/Versions.h"

#include "client/messages/ReplyXml.h"
#include "client/model/Failure.h"
#include "client/xml/TolerantScanner.h"

#include <array>
#include <optional>

namespace
{

constexpr std::array<std::string_view, 2> componentAttributes = {"Id", "Version"};
constexpr ElementForm componentForm = {"Component", componentAttributes, "/>\n"};

std::optional<Component> componentOf(const XmlElement& element)
{
    const std::optional<std::string> id = element.attribute("Id");
    const std::optional<std::string> version = element.attribute("Version");
    if (element.name != "Component" || !id || !version) {
        return std::nullopt;
    }
    return Component{*id, *version};
}

std::optional<Versions> readStrictly(const std::string& text)
{
    const std::optional<XmlElement> root = parseReplyXml(text);
    if (!root || root->name != "Versions") {
        return std::nullopt;
    }
    Versions versions;
    for (const XmlElement& child : root->children) {
        std::optional<Component> component = componentOf(child);
        if (!component) {
            return std::nullopt;
        }
        versions.components.push_back(std::move(*component));
    }
    return versions;
}

std::optional<Versions> readTolerantly(std::string_view rest)
{
    constexpr std::string_view opening = "<Versions>\n";
    if (!rest.starts_with(opening)) {
        return std::nullopt;
    }
    rest.remove_prefix(opening.size());
    Versions versions;
    versions.malformed = true;
    while (rest.starts_with('\t')) {
        rest.remove_prefix(1);
        const std::optional<XmlElement> element = scanElement(rest, componentForm);
        const std::optional<Component> component = element ? componentOf(*element) : std::nullopt;
        if (!component) {
            return std::nullopt;
        }
        versions.components.push_back(*component);
    }
    // With what has no end a card may have been cut off; to call it whole would hide components.
    return rest == "</Versions>" ? std::optional(versions) : std::nullopt;
}

} // namespace

Versions parseVersions(const std::string& text)
{
    // Strictly first: the other reading knows one layout only, and must not decide about what is XML.
    std::optional<Versions> versions = readStrictly(text);
    if (!versions) {
        versions = readTolerantly(text);
    }
    if (!versions) {
        throw garbage("the answer is no versions report");
    }
    return std::move(*versions);
}
