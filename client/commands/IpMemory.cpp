// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/IpMemory.h"

#include <cstdlib>
#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <sstream>

namespace
{

std::filesystem::path stateFolder()
{
    const char* stateHome = std::getenv("XDG_STATE_HOME");
    if (stateHome != nullptr && *stateHome != '\0') {
        return std::filesystem::path(stateHome) / "tarvelctl";
    }
    const char* home = std::getenv("HOME");
    return home == nullptr ? std::filesystem::path() : std::filesystem::path(home) / ".local/state/tarvelctl";
}

// A card's name may hold anything, a file's name may not.
std::filesystem::path fileOf(const std::string& card)
{
    std::string name = "ip-";
    for (const char letter : card) {
        const auto code = static_cast<unsigned char>(letter);
        name += std::isalnum(code) != 0 || letter == '-' ? std::string(1, letter) : fmt::format("%{:02x}", code);
    }
    return stateFolder() / name;
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

} // namespace

bool rememberIp(const std::string& card, const InterfaceConfig& interface)
{
    if (stateFolder().empty()) {
        return false;
    }
    std::error_code ignored;
    std::filesystem::create_directories(stateFolder(), ignored);
    std::ofstream file(fileOf(card));
    file << interface.name << ' ' << wordOf(interface.mode) << ' ' << wordOf(interface.address) << ' '
         << wordOf(interface.netmask) << ' ' << wordOf(interface.gateway) << '\n';
    return static_cast<bool>(file.flush());
}

std::optional<InterfaceConfig> rememberedIp(const std::string& card)
{
    std::ifstream file(fileOf(card));
    std::string name;
    std::string mode;
    std::string address;
    std::string netmask;
    std::string gateway;
    if (!(file >> name >> mode >> address >> netmask >> gateway)) {
        return std::nullopt;
    }
    for (const IpMode known : {IpMode::fixed, IpMode::dhcp, IpMode::disabled}) {
        if (mode == wordOf(known)) {
            return InterfaceConfig{name, known, valueOf(address), valueOf(netmask), valueOf(gateway)};
        }
    }
    return std::nullopt;
}
