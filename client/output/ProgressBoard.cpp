// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/ProgressBoard.h"

#include <algorithm>
#include <fmt/core.h>
#include <utility>

namespace
{

std::int64_t secondsBetween(ProgressBoard::Moment start, ProgressBoard::Moment end)
{
    return std::chrono::duration_cast<std::chrono::seconds>(end - start).count();
}

} // namespace

void ProgressBoard::tell(const std::string& label, Progress progress, Moment now)
{
    const auto [job, isNew] = jobs.try_emplace(label, Job{{}, now});
    // What is told again only has new details: the seconds are those of the phase.
    if (job->second.progress.phase != progress.phase) {
        job->second.since = now;
    }
    job->second.progress = std::move(progress);
}

void ProgressBoard::finish(const std::string& label)
{
    jobs.erase(label);
    ++done;
}

std::string ProgressBoard::text(Moment now) const
{
    if (jobs.empty()) {
        return {};
    }
    if (total > 1) {
        return textOfAll(now);
    }
    const auto& [label, job] = *jobs.begin();
    const auto& [phase, details, percent] = job.progress;
    return fmt::format("{}{}{} {} s{}{}", label, label.empty() ? "" : ": ", phase, secondsBetween(job.since, now),
                       details.empty() ? "" : ", ", details);
}

std::string ProgressBoard::textOfAll(Moment now) const
{
    const auto isSlower = [](const auto& one, const auto& other) {
        // What has not begun is slower than all that has.
        const auto rank = [](const Job& job) { return std::pair(job.progress.percent.value_or(-1), job.since); };
        return rank(one.second) < rank(other.second);
    };
    const auto& [label, job] = *std::min_element(jobs.begin(), jobs.end(), isSlower);
    const std::string percent = job.progress.percent ? fmt::format(" {:.0f} %", *job.progress.percent) : "";
    return fmt::format("{} of {} done, slowest {}{}, {} {} s", done, total, label, percent, job.progress.phase,
                       secondsBetween(job.since, now));
}
