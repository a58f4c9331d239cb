// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/ConfigStore.h"

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

// How many changes found their place.
int apply(const std::vector<Change>& changes, Package& package)
{
    int count = 0;
    for (const Change& change : changes) {
        count += change.applyTo(package) ? 1 : 0;
    }
    return count;
}

} // namespace

ConfigStore::ConfigStore(std::string configs, std::string changes)
    : configDirectory(std::move(configs)), changesDirectory(std::move(changes))
{
}

std::vector<std::string> ConfigStore::names() const
{
    std::vector<std::string> found = listFiles(configDirectory);
    if (found.empty()) {
        throw UciError::notFound();
    }
    std::erase_if(found, [](const std::string& name) { return !isConfigName(name); });
    return found;
}

Package ConfigStore::committed(const std::string& config) const
{
    const std::optional<std::string> text = readFile(configPath(config));
    if (!text) {
        throw UciError::notFound();
    }
    return parseConfig(config, *text);
}

Package ConfigStore::load(const std::string& config) const
{
    Package package = committed(config);
    ::apply(staged(config), package);
    return package;
}

StagedChanges ConfigStore::readStaged(const std::string& config) const
{
    return parseChanges(config, readFile(changesPath(config)).value_or(""));
}

std::vector<Change> ConfigStore::staged(const std::string& config) const
{
    return readStaged(config).changes;
}

void ConfigStore::stage(const std::string& config, const Change& change) const
{
    makeDirectory(changesDirectory);
    appendToFile(changesPath(config), change.describe(config) + "\n");
}

void ConfigStore::commit(const std::string& config) const
{
    requireWritable(configPath(config));
    Package package = committed(config);
    if (::apply(staged(config), package) == 0) {
        return;
    }
    rewriteFile(changesPath(config), "");
    replaceFile(configPath(config), writeConfig(package));
}

void ConfigStore::revert(const std::string& config, const std::string& section, const std::string& option) const
{
    const StagedChanges staged = readStaged(config);
    // One line that cannot be read keeps all of them, with the real tool as well.
    if (staged.changes.empty() || staged.hasNonsense) {
        return;
    }
    std::string kept;
    for (const Change& change : staged.changes) {
        if (!isBelow(change, section, option)) {
            kept += change.describe(config) + "\n";
        }
    }
    rewriteFile(changesPath(config), kept);
}
