// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceTcp.h"

#include "services/TimeReferenceMessages.h"
#include "timesettings/NtpService.h"
#include "util/Log.h"

#include <array>
#include <ctime>

namespace
{

std::string timeReferenceElement(std::string_view mode, std::string_view server, std::string_view dateTime)
{
    std::string text = "<TimeReferenceConfiguration Mode=\"";
    text += mode;
    text += "\" NtpServer=\"";
    text += server;
    text += "\" DateTime=\"";
    text += dateTime;
    text += "\"/>";
    return text;
}

} // namespace

int getUtcDateTime(std::string& text)
{
    const std::time_t now = std::time(nullptr);
    if (now == -1) {
        logErrno("Getting current UTC time failed (time)");
        return -1;
    }
    const std::tm* utc = std::gmtime(&now);
    if (utc == nullptr) {
        logErrno("Getting current UTC time failed (gmtime)");
        return -1;
    }
    std::array<char, 32> buffer;
    if (std::strftime(buffer.data(), buffer.size(), "%FT%T", utc) == 0) {
        logErrno("Formatting DateTime failed");
        return -1;
    }
    text = buffer.data();
    return 0;
}

int TarvelServiceTcp::processTimeReferenceGet(const MessageHeader& request)
{
    std::array<char, ntpServerAddressSize> address;
    std::string dateTime;
    if (getCurrentNtpServerAddress(address) == -1 || getUtcDateTime(dateTime) == -1) {
        sendFailureReply(request);
        return -1;
    }
    const std::string_view shownServer = address.front() != '\0' ? address.data() : "NOT CONFIGURED";

    // The mode word is always written; the result only repeats it.
    std::array<char, timeModeSize> mode;
    isNtpEnabled(mode);

    std::array<char, 1024> buffer = {};
    return sendText(request, buffer, timeReferenceElement(mode.data(), shownServer, dateTime));
}
