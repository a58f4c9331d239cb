// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Html.h"

#include "client/output/Printable.h"

namespace
{

std::string_view entityOf(char letter)
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
        return "&#39;";
    default:
        return {};
    }
}

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char letter : printable(text)) {
        const std::string_view entity = entityOf(letter);
        if (entity.empty()) {
            result += letter;
        } else {
            result += entity;
        }
    }
    return result;
}

} // namespace

Html::Html(std::string_view plainText) : markup(escaped(plainText)) {}

Html Html::verbatim(std::string_view ours)
{
    Html html;
    html.markup = ours;
    return html;
}

Html& Html::operator+=(const Html& more)
{
    markup += more.markup;
    return *this;
}

Html operator+(Html first, const Html& second)
{
    first += second;
    return first;
}

Html element(std::string_view tag, std::initializer_list<Attribute> attributes, const Html& content)
{
    std::string open = "<" + std::string(tag);
    for (const Attribute& attribute : attributes) {
        if (attribute.name.empty()) {
            continue;
        }
        open += " " + std::string(attribute.name);
        open += attribute.value.empty() ? "" : "=\"" + escaped(attribute.value) + "\"";
    }
    return Html::verbatim(open + ">" + content.text() + "</" + std::string(tag) + ">");
}

Html element(std::string_view tag, const Html& content)
{
    return element(tag, {}, content);
}
