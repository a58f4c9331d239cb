// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// Text that is HTML already. Other text becomes it by being escaped, and in no other way, so that nothing a card says
// is ever read as markup.
class Html
{
public:
    Html() = default;
    // What would not be printed on a terminal is in numbers here, too: control characters, what turns the direction of
    // reading, bytes that are no UTF-8.
    explicit Html(std::string_view plainText);

    // Of the files of this folder only.
    [[nodiscard]] static Html verbatim(std::string_view ours);

    Html& operator+=(const Html& more);
    [[nodiscard]] const std::string& text() const { return markup; }
    [[nodiscard]] bool empty() const { return markup.empty(); }

private:
    std::string markup;
};

[[nodiscard]] Html operator+(Html first, const Html& second);

// An attribute without a value has only its name.
struct Attribute {
    std::string_view name;
    std::string value{};
};

// <tag name="value">content</tag>. Attributes are escaped, and one whose name is empty is left out.
[[nodiscard]] Html element(std::string_view tag, std::initializer_list<Attribute> attributes, const Html& content);
[[nodiscard]] Html element(std::string_view tag, const Html& content);
