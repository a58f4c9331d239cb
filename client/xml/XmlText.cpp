// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/xml/XmlText.h"

namespace
{

std::string_view escaped(const char& letter)
{
    switch (letter) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    // A parser would make blanks of these three.
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    default:
        return {&letter, 1};
    }
}

} // namespace

void appendAttribute(std::string& xml, std::string_view name, std::string_view value)
{
    xml += ' ';
    xml += name;
    xml += "=\"";
    for (const char& letter : value) {
        xml += escaped(letter);
    }
    xml += '"';
}
