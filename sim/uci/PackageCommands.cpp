// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/PackageCommands.h"

#include "sim/uci/ConfigWriter.h"

#include <cstddef>

namespace
{

std::string describe(const std::string& prefix, const Option& option)
{
    std::string line = prefix + "." + option.name + "=";
    for (std::size_t i = 0; i < option.values.size(); ++i) {
        line.append(i == 0 ? "" : " ").append(quoted(option.values[i]));
    }
    return line + "\n";
}

std::string describe(const std::string& prefix, const Section& section)
{
    std::string text = prefix + "=" + section.type + "\n";
    for (const Option& option : section.options) {
        text += describe(prefix, option);
    }
    return text;
}

// Only here a section without a name of its own is told by type and index.
std::string describe(const Package& package)
{
    std::string text;
    for (const Section& section : package.sections) {
        text += describe(package.name + "." + package.displayName(section), section);
    }
    return text;
}

} // namespace

std::string show(const Session&, const Target& target)
{
    target.require();
    const std::string prefix = target.key.config + "." + target.sectionName();
    if (target.option != nullptr) {
        return describe(prefix, *target.option);
    }
    return target.section != nullptr ? describe(prefix, *target.section) : describe(target.package);
}

std::string changes(const Session& session, const Target& target)
{
    const std::string& config = target.key.config;
    std::string text;
    for (const Change& change : session.store.staged(config)) {
        text += (session.generation == Generation::of2014 ? change.plain(config) : change.describe(config)) + "\n";
    }
    return text;
}

std::string commit(const Session& session, const Target& target)
{
    if (session.mayCommit) {
        session.store.commit(target.key.config);
    }
    return "";
}
