// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/VersionsReport.h"

#include "services/TarvelServiceTcp.h"
#include "util/LibUtils.h"
#include "util/Log.h"

#include <array>
#include <vector>

namespace
{

constexpr std::string_view opening = "<Versions>\n";
constexpr std::string_view closing = "</Versions>";
constexpr std::size_t bufferSize = 2048; // with the terminating NUL

struct Component {
    std::string id;
    std::string version;
};

void addFixedComponents(std::vector<Component>& components)
{
    std::string version;
    if (LibUtils::readFirstLine(version, "/tmp/drav_pnr_assy") == 0) {
        components.push_back({"DravHardware", version});
    }
    if (LibUtils::readFirstLine(version, "/tmp/vemk_pnr_assy") == 0) {
        components.push_back({"VemkHardware", version});
    }
    if (LibUtils::readBootloaderPnr(version) == 1) {
        components.push_back({"BootLoader", version});
    }
    if (LibUtils::readBaseSystemVersion(version) == 1) {
        components.push_back({"BaseSystem", version});
    }
}

void addInstalledComponents(std::vector<Component>& components)
{
    std::vector<std::string> names;
    if (LibUtils::listPnrFiles(names) < 1) {
        return;
    }
    for (const std::string& name : names) {
        std::string path = name;
        std::string version;
        if (LibUtils::readPnrFile(path, version) == 1) {
            components.push_back({name, version});
        }
    }
}

std::vector<Component> readComponents()
{
    std::vector<Component> components;
    addFixedComponents(components);
    addInstalledComponents(components);
    return components;
}

} // namespace

void appendComponentLine(std::string& text, std::string_view id, std::string_view version)
{
    text += "\t<Component Id=\"";
    text += id;
    text += "\" Version=\"";
    text += version;
    text += "\"/>\n";
}

int TarvelServiceTcp::processVersions(const MessageHeader& request)
{
    std::string text(opening);
    for (const Component& component : readComponents()) {
        const std::size_t complete = text.size();
        appendComponentLine(text, component.id, component.version);
        if (text.size() + closing.size() >= bufferSize) {
            text.resize(complete);
            logWarning("Versions report is full: %s and all components after it are left out", component.id.c_str());
            break;
        }
    }
    text += closing;

    std::array<char, bufferSize> buffer;
    return sendText(request, buffer, text);
}
