// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/ConfigStore.h"

#include <algorithm>

#include "sim/uci/ConfigParser.h"
#include "sim/uci/ConfigWriter.h"
#include "sim/uci/Files.h"
#include "sim/uci/Names.h"
#include "sim/uci/UciError.h"

namespace
{

bool isBelow(const Change& change, const std::string& section, const std::string& option)
{
    return section.empty() || (change.section == section && (option.empty() || change.option == option));
}

} // namespace

ConfigStore::ConfigStore(std::string configs, std::string changes)
    : configDirectory(std::move(configs)), changesDirectory(std::move(changes))
{
}

std::vector<std::string> ConfigStore::names() const
{
    std::vector<std::string> found = listFiles(configDirectory);
    std::erase_if(found, [](const std::string& name) { return !isConfigName(name); });
    return found;
}

Package ConfigStore::committed(const std::string& config) const
{
    const std::optional<std::string> text = readFile(configDirectory + "/" + config);
    if (!text)
        throw UciError::notFound();
    return parseConfig(config, *text);
}

Package ConfigStore::load(const std::string& config) const
{
    Package package = committed(config);
    for (const Change& change : staged(config))
        change.applyTo(package);
    return package;
}

std::vector<Change> ConfigStore::staged(const std::string& config) const
{
    return parseChanges(readFile(changesPath(config)).value_or(""));
}

void ConfigStore::stage(const std::string& config, const Change& change) const
{
    makeDirectory(changesDirectory);
    appendToFile(changesPath(config), change.describe(config) + "\n");
}

void ConfigStore::commit(const std::string& config) const
{
    const Package package = load(config);
    if (staged(config).empty())
        return;
    replaceFile(configDirectory + "/" + config, writeConfig(package));
    removeFile(changesPath(config));
}

void ConfigStore::revert(const Key& key) const
{
    const Package package = load(key.config);
    const Section* section = package.find(key.section);
    const std::string name = section == nullptr ? key.section : section->name;

    std::string kept;
    for (const Change& change : staged(key.config)) {
        if (!isBelow(change, name, key.option))
            kept += change.describe(key.config) + "\n";
    }
    if (kept.empty())
        removeFile(changesPath(key.config));
    else
        replaceFile(changesPath(key.config), kept);
}
