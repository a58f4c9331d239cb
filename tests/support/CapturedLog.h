// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <vector>

// What the production code logged through syslog while this object lives; nothing reaches the machine's log.
class CapturedLog
{
public:
    struct Line {
        int level;
        std::string text;
        bool operator==(const Line&) const = default;
    };

    CapturedLog();
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    [[nodiscard]] const std::vector<Line>& lines() const { return captured; }
    [[nodiscard]] std::vector<std::string> texts() const;
    [[nodiscard]] std::vector<std::string> errors() const;
    [[nodiscard]] std::vector<std::string> warnings() const;
    [[nodiscard]] std::vector<std::string> infos() const;
    [[nodiscard]] std::vector<std::string> debugs() const;
    void clear() { captured.clear(); }

    // For the fakes only.
    void add(int level, std::string text);

private:
    [[nodiscard]] std::vector<std::string> withLevel(int level) const;

    std::vector<Line> captured;
};
