// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/NtpService.h"

#include "hardening/NtpServerRule.h"
#include "uci/Uci.h"
#include "util/BoundedText.h"
#include "util/Hardened.h"
#include "util/Log.h"
#include "util/Shell.h"

#include <array>

#include <unistd.h>

namespace
{

constexpr const char* serverKey = "system.ntp.server";
constexpr const char* startLink = "/etc/rc.d/S65ntpd"; // made by the script's "enable", removed by its "disable"

std::string actionWord(NtpServiceAction action)
{
    constexpr std::array<const char*, 5> words = {"start", "stop", "restart", "enable", "disable"};
    const auto code = static_cast<std::uint32_t>(action);
    return code < words.size() ? words[code] : words[0];
}

} // namespace

int controlNtpService(NtpServiceAction action)
{
    const std::string word = actionWord(action);
    if (runShell("/etc/init.d/ntpdate " + word) == -1) {
        return -1;
    }
    return runShell("/etc/init.d/ntpd " + word) == -1 ? -1 : 0;
}

int getCurrentNtpServerAddress(std::span<char, ntpServerAddressSize> address)
{
    std::string value;
    const int result = Uci::Get(serverKey, value);
    copyText(address, result == -1 ? "" : value);
    return result;
}

int setNtpServerAddress(const std::string& newAddress)
{
    std::array<char, ntpServerAddressSize> current;
    if (getCurrentNtpServerAddress(current) == -1) {
        return -1;
    }
    logInfo("Current NTP server address: %s", current.data());
    logInfo("New NTP server address: %s", newAddress.c_str());
    if (newAddress == current.data()) {
        logInfo("No change in NTP server configuration, keep current configuration file");
        return 0;
    }
    if constexpr (hardened) {
        if (!isPlainHost(newAddress)) {
            logWarning("NTP server \"%s\" is neither an address nor a host name, refused", newAddress.c_str());
            return -1;
        }
    }
    return Uci::Set(serverKey, newAddress);
}

int isNtpEnabled(std::span<char, timeModeSize> mode)
{
    const bool enabled = access(startLink, F_OK) == 0;
    copyText(mode, enabled ? "Ntp" : "Manual");
    return enabled ? 0 : -1;
}
