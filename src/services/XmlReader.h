// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct _xmlTextReader;

// Walks one XML document node by node; the only door to libxml2. Owns the document's text, because libxml2 keeps a
// pointer into it. The document ends at the text's first NUL.
class XmlReader
{
public:
    enum NodeType : int { element = 1, endElement = 15 };

    // If no reader can be made, logs "xmlReaderForDoc() failed" and the object converts to false. So it does, after
    // another warning, where the hardened build does not want the document to be parsed.
    explicit XmlReader(std::string document);
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;

    [[nodiscard]] explicit operator bool() const { return reader != nullptr; }

    // Moves to the next node. Returns 1 when there is one, 0 at the end of the document, -1 after logging
    // "xmlTextReaderRead() failed".
    int read();

    // About the current node. The name lives until the next read.
    [[nodiscard]] std::optional<std::string_view> name() const;
    [[nodiscard]] int nodeType() const;
    [[nodiscard]] bool hasAttributes() const;
    [[nodiscard]] std::optional<std::string> attribute(const char* attributeName) const;

    // The last error that libxml2 recorded for the current document, as one line; "no error recorded" if it
    // recorded none, as for an attribute that is missing.
    [[nodiscard]] static std::string lastError();

private:
    struct Deleter {
        void operator()(_xmlTextReader* open) const;
    };

    std::string text; // before the reader, which points into it
    std::unique_ptr<_xmlTextReader, Deleter> reader;
};

// Compares the library with the version that the daemon was made for.
void checkXmlLibrary();

// Frees what libxml2 keeps for the process. No XmlReader may be used afterwards.
void cleanUpXmlLibrary();
