// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/Commands.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "sim/uci/ConfigWriter.h"
#include "sim/uci/Key.h"
#include "sim/uci/UciError.h"

namespace
{

using Arguments = std::vector<std::string>;

const Section& sectionOf(const Package& package, const Key& key)
{
    const Section* section = package.find(key.section);
    if (section == nullptr)
        throw UciError::notFound();
    return *section;
}

const Option& optionOf(const Section& section, const Key& key)
{
    const Option* option = section.find(key.option);
    if (option == nullptr)
        throw UciError::notFound();
    return *option;
}

Key keyWithoutValue(const std::string& argument)
{
    Key key = Key::parse(argument);
    if (key.value)
        throw UciError::invalidArgument();
    return key;
}

// The configurations that a command with an optional name is about: the named one, or all.
std::vector<std::string> selectedConfigs(const ConfigStore& store, const Arguments& arguments)
{
    if (arguments.empty())
        return store.names();
    const Key key = keyWithoutValue(arguments.front());
    if (!key.section.empty())
        throw UciError::invalidArgument();
    return {key.config};
}

std::string get(const ConfigStore& store, const Arguments& arguments)
{
    const Key key = keyWithoutValue(arguments.front());
    const Package package = store.load(key.config);
    const Section& section = sectionOf(package, key);
    if (key.option.empty())
        return section.type + "\n";

    std::string line;
    for (const std::string& value : optionOf(section, key).values)
        line.append(line.empty() ? "" : " ").append(value);
    return line + "\n";
}

void stageSectionType(const ConfigStore& store, const Key& key, const Section* section)
{
    const bool isNew = section == nullptr;
    if (isNew && key.section.starts_with('@'))
        throw UciError::invalidArgument();
    if (isNew || section->type != *key.value)
        store.stage(key.config, {Change::Kind::set, isNew ? key.section : section->name, "", *key.value});
}

void stageOption(const ConfigStore& store, const Key& key, const Section* section)
{
    if (section == nullptr)
        throw UciError::invalidArgument();
    const Option* option = section->find(key.option);
    const bool isUnchanged = option != nullptr && !option->isList && option->values.front() == *key.value;
    if (!isUnchanged)
        store.stage(key.config, {Change::Kind::set, section->name, key.option, *key.value});
}

// An empty value deletes; what is not there needs no deletion and is no error.
void stageEmptyValue(const ConfigStore& store, const Key& key, const Section* section)
{
    const bool exists = section != nullptr && (key.option.empty() || section->find(key.option) != nullptr);
    if (exists)
        store.stage(key.config, {Change::Kind::remove, section->name, key.option, ""});
}

std::string set(const ConfigStore& store, const Arguments& arguments)
{
    const Key key = Key::parse(arguments.front());
    if (key.section.empty() || !key.value)
        throw UciError::invalidArgument();
    const Package package = store.load(key.config);
    const Section* section = package.find(key.section);
    if (key.value->empty())
        stageEmptyValue(store, key, section);
    else if (key.option.empty())
        stageSectionType(store, key, section);
    else
        stageOption(store, key, section);
    return "";
}

std::string remove(const ConfigStore& store, const Arguments& arguments)
{
    const Key key = keyWithoutValue(arguments.front());
    const Package package = store.load(key.config);
    const Section& section = sectionOf(package, key);
    if (!key.option.empty())
        optionOf(section, key);
    store.stage(key.config, {Change::Kind::remove, section.name, key.option, ""});
    return "";
}

std::string changes(const ConfigStore& store, const Arguments& arguments)
{
    std::string text;
    for (const std::string& config : selectedConfigs(store, arguments)) {
        store.load(config);
        for (const Change& change : store.staged(config))
            text += change.describe(config) + "\n";
    }
    return text;
}

std::string commit(const ConfigStore& store, const Arguments& arguments)
{
    for (const std::string& config : selectedConfigs(store, arguments)) {
        store.load(config);
        store.commit(config);
    }
    return "";
}

std::string revert(const ConfigStore& store, const Arguments& arguments)
{
    const Key key = keyWithoutValue(arguments.front());
    const Package package = store.load(key.config);
    const Section* section = key.section.empty() ? nullptr : package.find(key.section);
    store.revert(key.config, section != nullptr ? section->name : key.section, key.option);
    return "";
}

std::string describeOption(const std::string& prefix, const Option& option)
{
    std::string line = prefix + "." + option.name + "=";
    for (std::size_t i = 0; i < option.values.size(); ++i)
        line.append(i == 0 ? "" : " ").append(quoted(option.values[i]));
    return line + "\n";
}

std::string describeSection(const Package& package, const Section& section)
{
    const std::string prefix = package.name + "." + package.displayName(section);
    std::string text = prefix + "=" + section.type + "\n";
    for (const Option& option : section.options)
        text += describeOption(prefix, option);
    return text;
}

std::string describePackage(const Package& package)
{
    std::string text;
    for (const Section& section : package.sections)
        text += describeSection(package, section);
    return text;
}

std::string show(const ConfigStore& store, const Arguments& arguments)
{
    if (arguments.empty()) {
        std::string text;
        for (const std::string& config : store.names())
            text += describePackage(store.load(config));
        return text;
    }
    const Key key = keyWithoutValue(arguments.front());
    const Package package = store.load(key.config);
    if (key.section.empty())
        return describePackage(package);
    const Section& section = sectionOf(package, key);
    if (key.option.empty())
        return describeSection(package, section);
    return describeOption(package.name + "." + package.displayName(section), optionOf(section, key));
}

struct Command {
    std::string_view verb;
    std::size_t fewestArguments;
    std::string (*run)(const ConfigStore&, const Arguments&);
};

constexpr std::array commands{
    Command{"get", 1, get},         Command{"set", 1, set},       Command{"delete", 1, remove},
    Command{"changes", 0, changes}, Command{"commit", 0, commit}, Command{"revert", 1, revert},
    Command{"show", 0, show},
};

} // namespace

std::string runCommand(const ConfigStore& store, std::string_view verb, const std::vector<std::string>& arguments)
{
    const auto* command = std::ranges::find(commands, verb, &Command::verb);
    if (command == commands.end())
        throw UsageError(std::string("unknown command: ").append(verb));
    if (arguments.size() < command->fewestArguments)
        throw UsageError(std::string(verb) + ": argument missing");
    if (arguments.size() > 1)
        throw UsageError(std::string(verb) + ": too many arguments");
    return command->run(store, arguments);
}
