// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/FirmwareSignature.h"

#include "hardening/FirmwareSums.h"
#include "util/LibUtils.h"
#include "util/Log.h"
#include "util/Shell.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <utility>

namespace
{

constexpr const char* keyDirectory = "/etc/tarveld/keys";

std::vector<std::string> linesOf(const std::string& command)
{
    std::string output;
    static_cast<void>(LibUtils::executeCommandOutput(command, output)); // what is missing is noticed by what it lacks
    std::istringstream stream(output);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(std::move(line));
    }
    return lines;
}

// Nothing if they cannot be listed whole, as for want of memory: the last line, which names none, says that they were.
// A card whose keys nobody can see must not be taken for one that has none.
std::optional<std::vector<std::string>> listKeys()
{
    const std::string directory = keyDirectory;
    std::vector<std::string> keys =
        linesOf("{ test ! -e " + directory + " || ls " + directory + "; } 2>/dev/null && echo /");
    if (keys.empty() || keys.back() != "/") {
        return std::nullopt;
    }
    keys.pop_back();
    return keys;
}

bool isSignedWith(const std::string& key)
{
    if (key.find('\'') != std::string::npos) {
        return false; // it could not be a word of a command
    }
    const std::string files = std::string(" -m ") + sumsName + " -x " + signatureName;
    return runShell("usign -V -q" + files + " -p '" + keyDirectory + "/" + key + "' >/dev/null 2>&1") == 0;
}

std::string objectionToFirmware(const std::vector<std::string>& keys, const std::vector<std::string>& files)
{
    if (!hasSignature(files)) {
        return "it has no SHA256SUMS and SHA256SUMS.sig";
    }
    if (std::none_of(keys.begin(), keys.end(), isSignedWith)) {
        return std::string("none of the keys in ") + keyDirectory + " has signed its SHA256SUMS";
    }
    std::string text;
    static_cast<void>(LibUtils::executeCommandOutput(std::string("cat ") + sumsName, text)); // as above
    if (const std::vector<std::string> unlisted = unlistedOf(files, readSums(text)); !unlisted.empty()) {
        return unlisted.front() + " is not in its SHA256SUMS";
    }
    if (runShell(std::string("sha256sum -c ") + sumsName + " >/dev/null 2>&1") != 0) {
        return "a sum in its SHA256SUMS is wrong";
    }
    return "";
}

} // namespace

int checkSignature(const std::vector<std::string>& files)
{
    const std::optional<std::vector<std::string>> keys = listKeys();
    if (keys && keys->empty()) {
        logWarning("There is no key in %s: firmware of anybody is accepted", keyDirectory);
        return 0;
    }
    const std::string objection =
        keys ? objectionToFirmware(*keys, files) : std::string("the keys in ") + keyDirectory + " cannot be listed";
    if (!objection.empty()) {
        logWarning("Firmware is not accepted: %s", objection.c_str());
        return -1;
    }
    return 0;
}
