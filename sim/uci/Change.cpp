// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Change.h"

#include "sim/uci/ConfigWriter.h"
#include "sim/uci/Key.h"
#include "sim/uci/Lexer.h"
#include "sim/uci/Names.h"
#include "sim/uci/UciError.h"

namespace
{

// Sections are kept by name: "@type[0]" may be another one by the time it is read.
Change toChange(std::string_view config, const std::vector<std::string>& words)
{
    const std::string_view word = words.front();
    const bool isRemoval = word.starts_with('-');
    Key key = Key::parse(isRemoval ? word.substr(1) : word);
    if (words.size() > 1 || key.config != config || !isName(key.section) || isRemoval == key.value.has_value()) {
        throw UciError::invalidArgument();
    }
    return {isRemoval ? Change::Kind::remove : Change::Kind::set, key.section, key.option, key.value.value_or("")};
}

// A type of another length makes the section anew, under the name that was made up for it: from then on it has a name.
void setType(Section& section, const std::string& type)
{
    if (type.size() != section.type.size()) {
        section.anonymous = false;
    }
    section.type = type;
}

bool setIn(Package& package, const Change& change)
{
    Section* target = package.find(change.section);
    if (target == nullptr && !change.option.empty()) {
        return false;
    }
    if (target == nullptr) {
        package.add(change.value, change.section);
    } else if (change.option.empty()) {
        setType(*target, change.value);
    } else {
        target->set(change.option, change.value);
    }
    return true;
}

bool removeFrom(Package& package, const Change& change)
{
    Section* target = package.find(change.section);
    if (target == nullptr) {
        return false;
    }
    if (!change.option.empty()) {
        return target->remove(change.option);
    }
    package.remove(change.section);
    return true;
}

std::string keyOf(const Change& change, const std::string& config)
{
    const std::string key = config + "." + change.section + (change.option.empty() ? "" : "." + change.option);
    return change.kind == Change::Kind::remove ? "-" + key : key + "=";
}

} // namespace

bool Change::applyTo(Package& package) const
{
    return kind == Kind::set ? setIn(package, *this) : removeFrom(package, *this);
}

std::string Change::describe(const std::string& config) const
{
    return keyOf(*this, config) + (kind == Kind::set ? quoted(value) : "");
}

std::string Change::plain(const std::string& config) const
{
    return keyOf(*this, config) + value;
}

StagedChanges parseChanges(std::string_view config, std::string_view text)
{
    StagedChanges staged;
    Lexer lexer(text);
    std::vector<std::string> words;
    try {
        while (lexer.next(words)) {
            try {
                staged.changes.push_back(toChange(config, words));
            } catch (const UciError&) {
                staged.hasNonsense = true;
            }
        }
    } catch (const UciError&) { // an open quote takes the rest with it
        staged.hasNonsense = true;
    }
    return staged;
}
