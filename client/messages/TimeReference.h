// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

inline constexpr std::string_view noNtpServer = "NOT CONFIGURED"; // what a card reports for an empty server

enum class TimeMode { ntp, manual };

[[nodiscard]] std::string_view wordOf(TimeMode mode); // as in XML: "Ntp", "Manual"

// The time reference of a card as it reports it.
struct TimeReference {
    TimeMode mode;
    std::string server; // as reported
    std::int64_t time;  // seconds since 1970, UTC
    bool malformed = false;
};

// Throws a protocol Failure if the text is not even nearly a time reference.
[[nodiscard]] TimeReference parseTimeReference(const std::string& text);

// What is to be set; `server` is sent in both modes.
struct TimeRequest {
    TimeMode mode;
    std::string server;
    std::int64_t time;

    bool operator==(const TimeRequest&) const = default;
};

// The text of the request, without a NUL.
[[nodiscard]] std::string timeReferenceSetXml(const TimeRequest& request);

[[nodiscard]] std::string formatTime(std::int64_t time); // seconds since 1970 as "2021-03-04T05:06:07", UTC
// "2021-03-04T05:06:07" with nothing, "Z" or "+01:00" behind; without a zone it is UTC. Nothing for what is no time.
[[nodiscard]] std::optional<std::int64_t> parseTime(std::string_view text);
// What parseTime misses, to be said behind the text: "has a date that does not exist". Empty for a time.
[[nodiscard]] std::string_view flawOfTime(std::string_view text);
