// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/FakeUci.h"

FakeUci::FakeUci(FakeSystem& system)
{
    system.respondWith([this](std::string_view command) { return answerTo(command); });
}

void FakeUci::set(const std::string& key, const std::string& value)
{
    values[key] = value;
}

void FakeUci::remove(const std::string& key)
{
    values.erase(key);
}

std::optional<FakeSystem::Answer> FakeUci::answerTo(std::string_view command) const
{
    constexpr std::string_view get = "get ";
    if (!command.starts_with("uci get ") && !command.starts_with("uci -q get ")) {
        return std::nullopt;
    }
    command.remove_prefix(command.find(get) + get.size());
    const auto found = values.find(command.substr(0, command.find(' ')));
    if (found == values.end()) {
        return FakeSystem::Answer{exitStatus(1), {}};
    }
    return FakeSystem::Answer{0, found->second + "\n"};
}
