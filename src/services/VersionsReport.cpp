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

// The text of the report, made in place. What does not fit any more is left out, with all that comes after it.
class Report
{
public:
    Report()
    {
        text.reserve(bufferSize);
        text = opening;
    }

    void add(std::string_view id, std::string_view version)
    {
        if (full) {
            return;
        }
        const std::size_t complete = text.size();
        appendComponentLine(text, id, version);
        full = text.size() + closing.size() >= bufferSize;
        if (full) {
            text.resize(complete);
            logWarning("Versions report is full: %s and all components after it are left out", std::string(id).c_str());
        }
    }

    const std::string& finish() { return text += closing; }

private:
    std::string text;
    bool full = false;
};

void addFixedComponents(Report& report, std::string& version)
{
    if (LibUtils::readFirstLine(version, "/tmp/drav_pnr_assy") == 0) {
        report.add("DravHardware", version);
    }
    if (LibUtils::readFirstLine(version, "/tmp/vemk_pnr_assy") == 0) {
        report.add("VemkHardware", version);
    }
    if (LibUtils::readBootloaderPnr(version) == 1) {
        report.add("BootLoader", version);
    }
    if (LibUtils::readBaseSystemVersion(version) == 1) {
        report.add("BaseSystem", version);
    }
}

void addInstalledComponents(Report& report, std::string& version)
{
    std::vector<std::string> names;
    if (LibUtils::listPnrFiles(names) < 1) {
        return;
    }
    std::string path;
    for (const std::string& name : names) {
        path = name;
        if (LibUtils::readPnrFile(path, version) == 1) {
            report.add(name, version);
        }
    }
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
    Report report;
    std::string version;
    addFixedComponents(report, version);
    addInstalledComponents(report, version);

    std::array<char, bufferSize> buffer;
    return sendText(request, buffer, report.finish());
}
