// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceTcp.h"

#include "hardening/DateTimeRule.h"
#include "protocol/TextSection.h"
#include "services/TimeReferenceMessages.h"
#include "services/XmlReader.h"
#include "timesettings/TimeReference.h"
#include "util/Hardened.h"
#include "util/Log.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <optional>
#include <utility>

namespace
{

constexpr std::size_t maxPayload = 1024;
constexpr std::string_view elementName = "TimeReferenceConfiguration";

// Moves to the root and checks its name.
bool isAtTimeReference(XmlReader& reader)
{
    const int result = reader.read();
    if (result == 0) {
        logWarning("Time reference configuration not found in message");
    }
    if (result != 1) {
        return false;
    }
    const std::optional<std::string_view> name = reader.name();
    if (!name) {
        logWarning("Failed to find node name in message");
        return false;
    }
    // On purpose a prefix: longer names pass.
    if (!name->starts_with(elementName)) {
        logWarning("Bad node name: \"%s\" instead of \"%s\"", name->data(), elementName.data());
        return false;
    }
    return true;
}

std::optional<std::string> requiredAttribute(const XmlReader& reader, const char* name)
{
    std::optional<std::string> value = reader.attribute(name);
    if (!value) {
        logWarning("Getting %s attribute FAILED: %s", name, XmlReader::lastError().c_str());
    }
    return value;
}

// The seconds since 1970 of a date and time taken as UTC, whatever the local time zone is.
std::optional<long> parseDateTime(const std::string& text)
{
    unsigned int year = 0;
    unsigned int month = 0;
    unsigned int day = 0;
    unsigned int hour = 0;
    unsigned int minute = 0;
    unsigned int second = 0;
    // NOLINTNEXTLINE(cert-err34-c): a number out of range is normalised like any other
    if (std::sscanf(text.c_str(), "%u-%u-%uT%u:%u:%u", &year, &month, &day, &hour, &minute, &second) < 6) {
        logWarning("Parsing DateTime FAILED");
        return std::nullopt;
    }

    std::tm local = {};
    local.tm_year = static_cast<int>(year - 1900U);
    local.tm_mon = static_cast<int>(month - 1U);
    local.tm_mday = static_cast<int>(day);
    local.tm_hour = static_cast<int>(hour);
    local.tm_min = static_cast<int>(minute);
    local.tm_sec = static_cast<int>(second);
    local.tm_isdst = -1;
    const std::time_t localSeconds = std::mktime(&local);
    if (localSeconds == -1) {
        logWarning("mktime() FAILED");
        return std::nullopt;
    }
    const std::time_t seconds = localSeconds + local.tm_gmtoff;
    if constexpr (hardened) {
        if (!fitsClock(text, seconds)) {
            logWarning("DateTime is beyond what 32-bit seconds can hold");
            return std::nullopt;
        }
    }
    return static_cast<long>(seconds);
}

} // namespace

int parseTimeReferenceConfiguration(std::string payload)
{
    XmlReader reader(std::move(payload));
    if (!reader || !isAtTimeReference(reader)) {
        return -1;
    }

    // All three are fetched before any is judged, so that each missing one is in the log.
    const auto mode = requiredAttribute(reader, "Mode");
    const auto server = requiredAttribute(reader, "NtpServer");
    const auto dateTime = requiredAttribute(reader, "DateTime");
    if (!mode || !server || !dateTime) {
        return -1;
    }

    const std::optional<long> seconds = parseDateTime(*dateTime);
    if (!seconds) {
        return -1;
    }
    constexpr int withReplication = 1;
    return tsSetTimeReference(mode->c_str(), server->c_str(), *seconds, withReplication);
}

int TarvelServiceTcp::processTimeReferenceSet(const MessageHeader& request)
{
    if (!hasOnlyTextSection(request, "NTPConfigSet message should only contain a 8-bit section!")) {
        sendFailureReply(request);
        return -1;
    }
    if (request.payloadLength > maxPayload) {
        logWarning("Payload is too big");
        sendFailureReply(request);
        return -1;
    }

    std::array<std::byte, maxPayload> payload;
    const std::span<std::byte> received = std::span(payload).first(request.payloadLength);
    const int result = peer->receive(received);
    if (result == 0) {
        return -1;
    }
    if (result == -1) {
        sendFailureReply(request);
        return -1;
    }

    if (parseTimeReferenceConfiguration(std::string(readTextSection(received, CountOrder::wire))) == -1) {
        return sendFailureReply(request);
    }
    return sendStatus(request, Status::success);
}
