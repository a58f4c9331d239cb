// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/Change.h"

#include "sim/uci/ConfigWriter.h"
#include "sim/uci/Key.h"
#include "sim/uci/Lexer.h"
#include "sim/uci/UciError.h"

namespace
{

Change toChange(std::string_view word)
{
    const bool isRemoval = word.starts_with('-');
    Key key = Key::parse(isRemoval ? word.substr(1) : word);
    if (key.section.empty() || isRemoval == key.value.has_value())
        throw UciError::invalidArgument();
    return {isRemoval ? Change::Kind::remove : Change::Kind::set, key.section, key.option, key.value.value_or("")};
}

} // namespace

void Change::applyTo(Package& package) const
{
    Section* target = package.find(section);
    if (kind == Kind::remove) {
        if (option.empty())
            package.remove(section);
        else if (target != nullptr)
            target->remove(option);
    } else if (!option.empty()) {
        if (target != nullptr)
            target->set(option, value);
    } else if (target != nullptr) {
        target->type = value;
    } else {
        package.sections.push_back({value, section, false, {}});
    }
}

std::string Change::describe(const std::string& config) const
{
    const std::string key = config + "." + section + (option.empty() ? "" : "." + option);
    return kind == Kind::remove ? "-" + key : key + "=" + quoted(value);
}

std::vector<Change> parseChanges(std::string_view text)
{
    std::vector<Change> changes;
    Lexer lexer(text);
    std::vector<std::string> words;
    while (lexer.next(words)) {
        try {
            changes.push_back(toChange(words.front()));
        } catch (const UciError&) {
            continue;
        }
    }
    return changes;
}
