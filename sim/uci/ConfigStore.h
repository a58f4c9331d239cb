// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <string>
#include <vector>

#include "sim/uci/Change.h"
#include "sim/uci/Config.h"
#include "sim/uci/Key.h"

// A directory of configuration files and one of changes that are staged but not yet committed.
// Operations on a configuration that has no file throw UciError ("Entry not found").
class ConfigStore
{
public:
    ConfigStore(std::string configs, std::string changes);

    std::vector<std::string> names() const;

    // The file with its staged changes applied.
    Package load(const std::string& config) const;

    std::vector<Change> staged(const std::string& config) const;
    void stage(const std::string& config, const Change& change) const;

    // Writes the staged changes into the file; without any the file stays as it is, comments included.
    void commit(const std::string& config) const;

    // Drops the staged changes at or below the key.
    void revert(const Key& key) const;

private:
    Package committed(const std::string& config) const;
    std::string changesPath(const std::string& config) const { return changesDirectory + "/" + config; }

    std::string configDirectory;
    std::string changesDirectory;
};
