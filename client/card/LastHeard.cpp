// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/LastHeard.h"

#include "client/card/StateFolder.h"

#include <algorithm>
#include <fmt/core.h>
#include <fstream>
#include <iterator>
#include <sstream>

namespace
{

constexpr const char* fileName = "heard";

} // namespace

LastHeard LastHeard::load()
{
    std::ifstream file(stateFolder() / fileName);
    return parse(std::string(std::istreambuf_iterator<char>(file), {}));
}

LastHeard LastHeard::parse(std::string_view text)
{
    LastHeard known;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string name;
        Hearing hearing;
        if (words >> name >> hearing.address >> hearing.moment) {
            words >> hearing.interface;
            known.hearings[name] = hearing;
        }
    }
    return known;
}

std::optional<LastHeard::Hearing> LastHeard::of(const std::string& name) const
{
    const auto found = hearings.find(plainWord(name));
    return found == hearings.end() ? std::nullopt : std::optional(found->second);
}

void LastHeard::note(const std::string& name, Hearing hearing)
{
    hearings[plainWord(name)] = std::move(hearing);
}

std::string LastHeard::text() const
{
    std::string text;
    for (const auto& [name, hearing] : hearings) {
        const char* const gap = hearing.interface.empty() ? "" : " ";
        text += fmt::format("{} {} {}{}{}\n", name, hearing.address, hearing.moment, gap, hearing.interface);
    }
    return text;
}

void LastHeard::save() const
{
    const StateLock alone;
    LastHeard all = load();
    for (const auto& [word, hearing] : hearings) {
        Hearing& known = all.hearings[word];
        // Another run may have heard it since.
        known = hearing.moment < known.moment ? known : hearing;
    }
    static_cast<void>(replaceStateFile(fileName, all.text()));
}

std::string ageText(std::int64_t seconds)
{
    struct Unit {
        std::int64_t seconds;
        const char* name;
    };
    for (const Unit& unit : {Unit{86400, "days"}, Unit{3600, "h"}, Unit{60, "min"}}) {
        if (seconds >= 2 * unit.seconds) { // "90 min" tells more than "1 h"
            return fmt::format("{} {}", seconds / unit.seconds, unit.name);
        }
    }
    return fmt::format("{} s", std::max<std::int64_t>(seconds, 0));
}
