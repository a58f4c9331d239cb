// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/TimeReference.h"

#include "client/wire/Frame.h"
#include "client/xml/TolerantScanner.h"
#include "client/xml/XmlElement.h"
#include "client/xml/XmlText.h"

#include <array>
#include <charconv>
#include <chrono>
#include <fmt/core.h>

namespace
{

constexpr std::array<std::string_view, 3> attributes = {"Mode", "NtpServer", "DateTime"};
constexpr ElementForm form = {"TimeReferenceConfiguration", attributes, "/>"};

std::optional<TimeReference> referenceOf(const XmlElement& element)
{
    const std::optional<std::string> mode = element.attribute("Mode");
    const std::optional<std::string> server = element.attribute("NtpServer");
    const std::optional<std::int64_t> time = parseTime(element.attribute("DateTime").value_or(""));
    if (element.name != form.name || !server || !time || (mode != "Ntp" && mode != "Manual")) {
        return std::nullopt;
    }
    return TimeReference{*mode, *server, *time};
}

// Takes a number of exactly `width` digits off the front.
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

std::optional<std::int64_t> takeDate(std::string_view& text)
{
    const std::optional<int> year = takeNumber(text, 4);
    const bool firstDash = takeLetter(text, '-');
    const std::optional<int> month = takeNumber(text, 2);
    const bool secondDash = takeLetter(text, '-');
    const std::optional<int> day = takeNumber(text, 2);
    if (!year || !month || !day || !firstDash || !secondDash) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok()) {
        return std::nullopt;
    }
    return std::chrono::sys_days(date).time_since_epoch().count() * std::int64_t{86400};
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

} // namespace

TimeReference parseTimeReference(const std::string& text, const std::string& phase)
{
    if (const std::optional<XmlElement> element = parseReplyXml(text)) {
        if (std::optional<TimeReference> reference = referenceOf(*element)) {
            return std::move(*reference);
        }
    }
    std::string_view rest = text;
    const std::optional<XmlElement> element = scanElement(rest, form);
    std::optional<TimeReference> reference = element && rest.empty() ? referenceOf(*element) : std::nullopt;
    if (!reference) {
        throw garbage(phase, "the answer is no time reference");
    }
    reference->malformed = true;
    return std::move(*reference);
}

std::string timeReferenceSetXml(const TimeRequest& request)
{
    std::string xml = "<TimeReferenceConfiguration";
    appendAttribute(xml, "Mode", request.mode);
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
    const std::optional<std::int64_t> date = takeDate(text);
    const bool separator = takeLetter(text, 'T');
    const std::optional<int> clock = takeClock(text, true);
    const std::optional<int> zone = takeZone(text);
    if (!date || !separator || !clock || !zone || !text.empty()) {
        return std::nullopt;
    }
    return *date + *clock - *zone;
}
