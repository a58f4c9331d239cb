// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Change.h"
#include "sim/uci/Config.h"

#include <string>
#include <vector>

// A directory of configuration files and one of changes that are staged but not yet committed.
// Operations on a configuration that has no file throw UciError ("Entry not found").
class ConfigStore
{
public:
    ConfigStore(std::string configs, std::string changes);

    // Throws UciError if there is none.
    std::vector<std::string> names() const;

    // The file with its staged changes applied.
    Package load(const std::string& config) const;

    std::vector<Change> staged(const std::string& config) const;
    // A full disk goes unnoticed.
    void stage(const std::string& config, const Change& change) const;

    // Writes the staged changes into the file; without any the file stays as it is, comments included. As with the real
    // tool the changes are gone before the file is written, and whether it could be written is not looked at: a full
    // disk leaves an empty file and no error. A file that cannot be opened for writing throws UciError, and the
    // changes stay.
    void commit(const std::string& config) const;

    // Drops the staged changes at or below the section (empty: all) and option (empty: all).
    void revert(const std::string& config, const std::string& section, const std::string& option) const;

private:
    Package committed(const std::string& config) const;
    StagedChanges readStaged(const std::string& config) const;
    std::string configPath(const std::string& config) const { return configDirectory + "/" + config; }
    std::string changesPath(const std::string& config) const { return changesDirectory + "/" + config; }

    std::string configDirectory;
    std::string changesDirectory;
};
