// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

// What a job does at the moment.
struct Progress {
    std::string phase;               // such as "sending"
    std::string details{};           // such as "3.1 of 12.4 MiB"
    std::optional<double> percent{}; // nothing: it has not begun
};

// How the jobs of a run get on, as one line: of a single one what it does, of several how many are done, and which is
// the slowest.
class ProgressBoard
{
public:
    using Moment = std::chrono::steady_clock::time_point;

    void expect(std::size_t number) { total = number; }
    void tell(const std::string& label, Progress progress, Moment now);
    void finish(const std::string& label);
    void forget(const std::string& label) { jobs.erase(label); } // it was none of those that are expected

    // Empty if no job is at work.
    [[nodiscard]] std::string text(Moment now) const;

private:
    struct Job {
        Progress progress;
        Moment since; // when its phase began
    };

    [[nodiscard]] std::string textOfAll(Moment now) const;

    std::size_t total = 1;
    std::size_t done = 0;
    std::map<std::string, Job> jobs; // at work
};
