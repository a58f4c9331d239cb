// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/xml/XmlElement.h"

#include <algorithm>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <limits>
#include <memory>

namespace
{

constexpr int deepest = 4; // a message has two levels

std::string toText(const xmlChar* text)
{
    return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

std::string valueOf(xmlDoc* document, const xmlAttr& attribute)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> value(xmlNodeListGetString(document, attribute.children, 1),
                                                            xmlFree);
    return toText(value.get());
}

std::optional<XmlElement> convert(xmlDoc* document, const xmlNode& node, int depth)
{
    if (depth > deepest) {
        return std::nullopt;
    }
    XmlElement element{toText(node.name), {}, {}};
    for (const xmlAttr* attribute = node.properties; attribute != nullptr; attribute = attribute->next) {
        element.attributes.emplace_back(toText(attribute->name), valueOf(document, *attribute));
    }
    for (const xmlNode* child = node.children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE) {
            continue;
        }
        std::optional<XmlElement> inner = convert(document, *child, depth + 1);
        if (!inner) {
            return std::nullopt;
        }
        element.children.push_back(std::move(*inner));
    }
    return element;
}

} // namespace

std::optional<std::string> XmlElement::attribute(std::string_view wanted) const
{
    const auto found =
        std::find_if(attributes.begin(), attributes.end(), [&](const auto& one) { return one.first == wanted; });
    return found == attributes.end() ? std::nullopt : std::optional(found->second);
}

std::optional<XmlElement> parseXml(const std::string& text)
{
    // The library counts in int.
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return std::nullopt;
    }
    // No option keeps complaints about the encoding off stderr.
    xmlSetStructuredErrorFunc(nullptr, [](void* /*context*/, auto* /*error*/) {});
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "message.xml", nullptr, XML_PARSE_NONET), xmlFreeDoc);
    // No card writes a document type, in which a stranger could define entities that grow without end.
    if (!document || xmlGetIntSubset(document.get()) != nullptr) {
        return std::nullopt;
    }
    const xmlNode* root = xmlDocGetRootElement(document.get());
    return root == nullptr ? std::nullopt : convert(document.get(), *root, 1);
}
