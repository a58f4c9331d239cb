// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/xml/XmlElement.h"

#include <optional>
#include <span>
#include <string_view>

// Cards put values into their XML without escaping them, so a version such as 1.0<"beta"> makes a report that is no
// XML. The texts have a fixed form, though, and can be read by it: an element begins with "<Name", its attributes
// come in a known order, and a value ends only where `" Next="` of a later attribute or the element's own end begins.
struct ElementForm {
    std::string_view name;
    std::span<const std::string_view> attributes; // in the order in which the card writes them; any may be missing
    std::string_view end;                         // such as "/>\n"
};

// Takes one element off the front of the text; nothing, with the text unchanged, if it does not have that form.
[[nodiscard]] std::optional<XmlElement> scanElement(std::string_view& text, const ElementForm& form);
