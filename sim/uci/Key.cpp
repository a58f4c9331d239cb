// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Key.h"

#include "sim/uci/Names.h"
#include "sim/uci/UciError.h"

#include <cstddef>

namespace
{

// Cuts the text off at the separator and returns what follows it; nothing if there is no separator.
std::optional<std::string> cut(std::string& text, char separator)
{
    const std::size_t position = text.find(separator);
    if (position == std::string::npos) {
        return std::nullopt;
    }
    std::string rest = text.substr(position + 1);
    text.resize(position);
    return rest;
}

} // namespace

Key Key::parse(std::string_view text)
{
    Key key;
    key.config = text;
    key.value = cut(key.config, '=');
    const std::optional<std::string> section = cut(key.config, '.');
    key.section = section.value_or("");
    const std::optional<std::string> option = cut(key.section, '.');
    key.option = option.value_or("");

    const bool isReadable =
        isConfigName(key.config) && (!option || isName(key.option)) && (!key.value || isText(*key.value));
    if (!isReadable) {
        throw UciError::unreadableKey();
    }
    if (section && key.section.empty()) {
        throw UciError::invalidArgument();
    }
    return key;
}
