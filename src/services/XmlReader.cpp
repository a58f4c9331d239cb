// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/XmlReader.h"

#include "hardening/DocumentRule.h"
#include "util/Hardened.h"
#include "util/Log.h"

#include <algorithm>
#include <utility>

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlreader.h>
#include <libxml/xmlversion.h>

namespace
{

constexpr const char* documentName = "noname.xml";
constexpr int requiredVersion = 20909;

// Errors are told by lastError(): none may be left from an earlier document, and none may be printed by libxml2.
void prepareErrors()
{
    xmlResetLastError();
    xmlSetStructuredErrorFunc(nullptr, [](void* /*context*/, auto* /*error*/) {});
}

const char* chars(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

} // namespace

XmlReader::XmlReader(std::string document) : text(std::move(document))
{
    prepareErrors();
    if constexpr (hardened) {
        if (const char* objection = objectionTo(text); objection != nullptr) {
            logWarning("Document refused: %s", objection);
            return;
        }
    }
    constexpr const char* noEncoding = nullptr;
    constexpr int noOptions = 0;
    reader.reset(xmlReaderForDoc(reinterpret_cast<const xmlChar*>(text.c_str()), documentName, noEncoding, noOptions));
    if (!reader) {
        logWarning("xmlReaderForDoc() failed: %s", lastError().c_str());
    }
}

void XmlReader::Deleter::operator()(_xmlTextReader* open) const
{
    xmlFreeTextReader(open);
}

int XmlReader::read()
{
    const int result = xmlTextReaderRead(reader.get());
    if (result == -1) {
        logWarning("xmlTextReaderRead() failed: %s", lastError().c_str());
    }
    return result;
}

std::optional<std::string_view> XmlReader::name() const
{
    const xmlChar* found = xmlTextReaderConstName(reader.get());
    return found != nullptr ? std::optional<std::string_view>(chars(found)) : std::nullopt;
}

int XmlReader::nodeType() const
{
    return xmlTextReaderNodeType(reader.get());
}

bool XmlReader::hasAttributes() const
{
    return xmlTextReaderHasAttributes(reader.get()) == 1;
}

std::optional<std::string> XmlReader::attribute(const char* attributeName) const
{
    xmlChar* found = xmlTextReaderGetAttribute(reader.get(), reinterpret_cast<const xmlChar*>(attributeName));
    if (found == nullptr) {
        return std::nullopt;
    }
    std::string value = chars(found);
    xmlFree(found);
    return value;
}

std::string XmlReader::lastError()
{
    const auto* error = xmlGetLastError();
    if (error == nullptr || error->message == nullptr) {
        return "no error recorded";
    }
    std::string message = error->message;
    while (message.ends_with('\n')) {
        message.pop_back();
    }
    // Some versions tell the bytes that are no UTF-8 on a second line.
    std::replace(message.begin(), message.end(), '\n', ' ');
    return message;
}

void checkXmlLibrary()
{
    xmlCheckVersion(requiredVersion);
}

void cleanUpXmlLibrary()
{
    xmlCleanupParser();
}
