// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Target.h"

#include "sim/uci/UciError.h"

Target::Target(const ConfigStore& store, const std::string& argument)
    : key(Key::parse(argument)), package(store.load(key.config))
{
    if (!key.section.empty()) {
        section = package.find(key.section);
    }
    if (section != nullptr && !key.option.empty()) {
        option = section->find(key.option);
    }
    isComplete = (key.section.empty() || section != nullptr) && (key.option.empty() || option != nullptr);
}

void Target::require() const
{
    if (!isComplete) {
        throw UciError::notFound();
    }
}
