// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/SectionCommands.h"

#include "sim/uci/ConfigWriter.h"
#include "sim/uci/Names.h"
#include "sim/uci/UciError.h"

namespace
{

void stage(const Session& session, const Target& target, Change::Kind kind)
{
    const Key& key = target.key;
    session.store.stage(key.config, {kind, target.sectionName(), key.option, key.value.value_or("")});
}

void refuseValue(const Target& target)
{
    if (target.key.value) {
        throw UciError::silent();
    }
}

// In a list only what has blanks is quoted; a single value never is.
std::string valuesOf(const Option& option)
{
    std::string line;
    for (const std::string& value : option.values) {
        const bool isPlain = !option.isList || value.find_first_of(" \t\r\n") == std::string::npos;
        line.append(&value == option.values.data() ? "" : " ").append(isPlain ? value : quoted(value));
    }
    return line;
}

void checkSettable(const Target& target)
{
    const Key& key = target.key;
    const bool hasPlace = target.section != nullptr || (key.option.empty() && !key.section.empty());
    const bool isType = key.option.empty() && key.value && !key.value->empty();
    if (!key.value || !hasPlace || (isType && !isTypeName(*key.value))) {
        throw UciError::invalidArgument();
    }
}

bool isSetAlready(const Target& target)
{
    if (target.option != nullptr) {
        return !target.option->isList && target.option->values.front() == *target.key.value;
    }
    return target.key.option.empty() && target.section != nullptr && target.section->type == *target.key.value;
}

} // namespace

std::string get(const Session&, const Target& target)
{
    refuseValue(target);
    target.require();
    if (target.option != nullptr) {
        return valuesOf(*target.option) + "\n";
    }
    return target.section == nullptr ? "" : target.section->type + "\n";
}

std::string set(const Session& session, const Target& target)
{
    checkSettable(target);
    if (!target.key.value->empty()) {
        if (!isSetAlready(target)) {
            stage(session, target, Change::Kind::set);
        }
    } else if (target.isComplete) {
        stage(session, target, Change::Kind::remove);
    }
    return "";
}

std::string remove(const Session& session, const Target& target)
{
    if (target.key.value) {
        throw NotSimulated("delete of a list's item");
    }
    target.require();
    if (target.section == nullptr) {
        throw UciError::invalidArgument();
    }
    stage(session, target, Change::Kind::remove);
    return "";
}

std::string revert(const Session& session, const Target& target)
{
    refuseValue(target);
    session.store.revert(target.key.config, target.sectionName(), target.key.option);
    return "";
}
