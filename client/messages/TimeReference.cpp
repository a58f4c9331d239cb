// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/TimeReference.h"

#include "client/messages/ReplyXml.h"
#include "client/model/Failure.h"
#include "client/xml/TolerantScanner.h"
#include "client/xml/XmlText.h"

#include <array>
#include <charconv>
#include <chrono>
#include <fmt/core.h>

namespace
{

constexpr std::array<std::string_view, 3> attributes = {"Mode", "NtpServer", "DateTime"};
constexpr ElementForm form = {"TimeReferenceConfiguration", attributes, "/>"};

std::optional<TimeMode> modeOf(std::string_view word)
{
    for (const TimeMode mode : {TimeMode::ntp, TimeMode::manual}) {
        if (word == wordOf(mode)) {
            return mode;
        }
    }
    return std::nullopt;
}

std::optional<TimeReference> referenceOf(const XmlElement& element)
{
    const std::optional<TimeMode> mode = modeOf(element.attribute("Mode").value_or(""));
    const std::optional<std::string> server = element.attribute("NtpServer");
    const std::optional<std::int64_t> time = parseTime(element.attribute("DateTime").value_or(""));
    if (element.name != form.name || !server || !time || !mode) {
        return std::nullopt;
    }
    return TimeReference{*mode, *server, *time};
}

// In an attribute they become spaces, and what is sent back must be what came.
bool hasBlanksThatXmlReplaces(std::string_view text)
{
    return text.find_first_of("\t\r\n") != std::string_view::npos;
}

std::optional<TimeReference> scanReference(std::string_view text)
{
    const std::optional<XmlElement> element = scanElement(text, form);
    return element && text.empty() ? referenceOf(*element) : std::nullopt;
}

// Takes a number of exactly `width` digits off the front. The libraries of gcc 12 and musl have nothing that reads a
// time as strictly: strptime takes blanks, and numbers of fewer digits.
std::optional<int> takeNumber(std::string_view& text, std::size_t width)
{
    int number = 0;
    if (text.size() < width || text.find_first_not_of("0123456789") < width) {
        return std::nullopt;
    }
    std::from_chars(text.data(), text.data() + width, number);
    text.remove_prefix(width);
    return number;
}

bool takeLetter(std::string_view& text, char letter)
{
    if (!text.starts_with(letter)) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

std::optional<std::chrono::year_month_day> takeDate(std::string_view& text)
{
    const std::optional<int> year = takeNumber(text, 4);
    const bool firstDash = takeLetter(text, '-');
    const std::optional<int> month = takeNumber(text, 2);
    const bool secondDash = takeLetter(text, '-');
    const std::optional<int> day = takeNumber(text, 2);
    if (!year || !month || !day || !firstDash || !secondDash) {
        return std::nullopt;
    }
    return std::chrono::year_month_day{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                       std::chrono::day(static_cast<unsigned>(*day))};
}

// "05:06:07", or "05:06" of a zone.
std::optional<int> takeClock(std::string_view& text, bool withSeconds)
{
    const std::optional<int> hour = takeNumber(text, 2);
    const bool colon = takeLetter(text, ':');
    const std::optional<int> minute = takeNumber(text, 2);
    if (!hour || !minute || !colon || *hour > 23 || *minute > 59) {
        return std::nullopt;
    }
    if (!withSeconds) {
        return *hour * 3600 + *minute * 60;
    }
    const bool secondColon = takeLetter(text, ':');
    const std::optional<int> second = takeNumber(text, 2);
    // Seconds since 1970, which is what a card is set to, have no leap second.
    if (!second || !secondColon || *second > 59) {
        return std::nullopt;
    }
    return *hour * 3600 + *minute * 60 + *second;
}

// How far the zone at the end of the text is east of UTC.
std::optional<int> takeZone(std::string_view& text)
{
    if (text.empty() || takeLetter(text, 'Z')) {
        return 0;
    }
    const bool west = takeLetter(text, '-');
    if (!west && !takeLetter(text, '+')) {
        return std::nullopt;
    }
    const std::optional<int> offset = takeClock(text, false);
    return offset ? std::optional(west ? -*offset : *offset) : std::nullopt;
}

// A time, or why it is none.
struct TimeText {
    std::optional<std::int64_t> time;
    std::string_view flaw;
};

TimeText readTime(std::string_view text)
{
    const std::optional<std::chrono::year_month_day> date = takeDate(text);
    const bool separator = takeLetter(text, 'T');
    const std::optional<int> clock = takeClock(text, true);
    if (!date || !separator || !clock) {
        return {std::nullopt, "is no time such as 2026-03-04T05:06:07Z"};
    }
    if (!date->ok()) {
        return {std::nullopt, "has a date that does not exist"};
    }
    const std::optional<int> zone = takeZone(text);
    if (!zone || !text.empty()) {
        return {std::nullopt, "has a zone that cannot be read: it is Z, or such as +01:00"};
    }
    const auto days = std::chrono::sys_days(*date).time_since_epoch().count();
    return {days * std::int64_t{86400} + *clock - *zone, {}};
}

} // namespace

std::string_view wordOf(TimeMode mode)
{
    return mode == TimeMode::ntp ? "Ntp" : "Manual";
}

TimeReference parseTimeReference(const std::string& text)
{
    const std::optional<XmlElement> element = parseReplyXml(text);
    std::optional<TimeReference> reference = element ? referenceOf(*element) : std::nullopt;
    if (reference && !hasBlanksThatXmlReplaces(text)) {
        return std::move(*reference);
    }
    std::optional<TimeReference> raw = scanReference(text);
    if (!raw && !reference) {
        throw garbage("the answer is no time reference");
    }
    if (!raw) {
        return std::move(*reference);
    }
    // If it is XML after all, only its blanks were wrong.
    raw->malformed = !reference;
    return std::move(*raw);
}

std::string timeReferenceSetXml(const TimeRequest& request)
{
    std::string xml = "<TimeReferenceConfiguration";
    appendAttribute(xml, "Mode", wordOf(request.mode));
    appendAttribute(xml, "NtpServer", request.server);
    appendAttribute(xml, "DateTime", formatTime(request.time));
    return xml + "/>";
}

std::string formatTime(std::int64_t time)
{
    const std::chrono::sys_seconds moment{std::chrono::seconds(time)};
    const auto midnight = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(midnight);
    const std::chrono::hh_mm_ss clock(moment - midnight);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
                       clock.minutes().count(), clock.seconds().count());
}

std::optional<std::int64_t> parseTime(std::string_view text)
{
    return readTime(text).time;
}

std::string_view flawOfTime(std::string_view text)
{
    return readTime(text).flaw;
}
