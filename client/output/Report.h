// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Result.h"

#include <set>
#include <string>
#include <vector>

class Console;

// Tells people how targets ended. A failure is one line that fits a terminal; its hint follows, unless it is known from
// a failure before.
class Report
{
public:
    explicit Report(const Console& newConsole) : console(newConsole) {}

    void tell(const Result& result);
    // The same of a failure of which there are several sentences to say, each on a line of its own.
    void tellAll(const Result& failed, const std::vector<std::string>& sentences) const;
    // "8 ok, 100 not found"; nothing for a single target, or if all are well.
    void count(const std::vector<Result>& results) const;

private:
    [[nodiscard]] bool isNews(const Result& failed);

    const Console& console;
    std::set<std::string> hints; // those that were told
};
