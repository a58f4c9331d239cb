// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpMemory.h"

#include "client/card/StateFolder.h"

#include <array>
#include <fmt/core.h>
#include <fstream>
#include <map>
#include <sstream>

namespace
{

std::string fileOf(const std::string& card)
{
    return "ip-" + plainWord(card);
}

// A present value follows a "=", so that an empty one differs from none.
std::string wordOf(const std::optional<std::string>& value)
{
    return value ? "=" + *value : "-";
}

std::optional<std::string> valueOf(const std::string& word)
{
    return word.starts_with('=') ? std::optional(word.substr(1)) : std::nullopt;
}

// The time stands last, because the lines of old have none.
std::string lineOf(const RememberedIp& entry)
{
    const InterfaceConfig& interface = entry.settings;
    const std::string time = entry.time ? fmt::format(" {}", *entry.time) : "";
    return fmt::format("{} {} {} {} {}{}\n", interface.name, wordOf(interface.mode), wordOf(interface.address),
                       wordOf(interface.netmask), wordOf(interface.gateway), time);
}

std::optional<RememberedIp> entryIn(const std::string& line)
{
    std::istringstream words(line);
    std::string name;
    std::string mode;
    std::array<std::string, 3> values;
    if (!(words >> name >> mode >> values[0] >> values[1] >> values[2]) || !ipModeOf(mode)) {
        return std::nullopt;
    }
    RememberedIp entry{{name, *ipModeOf(mode), valueOf(values[0]), valueOf(values[1]), valueOf(values[2])}, {}};
    std::int64_t time = 0;
    if (words >> time) {
        entry.time = time;
    }
    return entry;
}

} // namespace

bool rememberIp(const std::string& card, const InterfaceConfig& interface, std::int64_t now)
{
    // What another run remembers between the reading and the writing would be lost.
    const StateLock alone;
    std::string text = lineOf({interface, now});
    std::map<std::string, std::size_t> kept = {{interface.name, 1}}; // with the new one
    for (const RememberedIp& former : rememberedIps(card)) {
        if (++kept[former.settings.name] <= mostRemembered) {
            text += lineOf(former);
        }
    }
    return replaceStateFile(fileOf(card), text);
}

std::vector<RememberedIp> rememberedIps(const std::string& card)
{
    std::ifstream file(stateFolder() / fileOf(card));
    std::vector<RememberedIp> entries;
    std::string line;
    while (std::getline(file, line)) {
        const std::optional<RememberedIp> entry = entryIn(line);
        // A line that is damaged, or of a program to come, must not hide the others.
        if (entry) {
            entries.push_back(*entry);
        }
    }
    return entries;
}
