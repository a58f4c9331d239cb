// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/card/TimeChange.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"
#include "client/commands/TimeReport.h"
#include "client/model/CalendarTime.h"
#include "client/output/Console.h"
#include "client/plan/TimePlan.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

class TimeSetCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "time set"; }
    [[nodiscard]] std::vector<Column> columns() const override { return timeColumns(); }
    [[nodiscard]] bool changesCards() const override { return true; }

    void declareOwn(OptionSet& options) override
    {
        options.value("--ntp", &server, "HOST", "take the time from this NTP server");
        options.value("--manual", &manual, "TIME",
                      "set the clock by hand: \"now\", or such as 2026-03-04T05:06:07, UTC unless a zone follows");
    }

    void prepare(Context& context, const std::vector<Target>& /*targets*/) override
    {
        if (server.has_value() == manual.has_value()) {
            throw usageFailure("give either --ntp or --manual");
        }
        timeOptions.mode = manual ? TimeMode::manual : TimeMode::ntp;
        timeOptions.server = server.value_or("");
        timeOptions.time = secondsNow();
        if (manual && *manual != "now") {
            const std::optional<std::int64_t> time = parseTime(*manual);
            if (!time) {
                throw usageFailure(fmt::format("\"{}\" {}", *manual, flawOfTime(*manual)));
            }
            timeOptions.time = *time;
            isFixedTime = true;
        }
        checkTimeOptions(timeOptions, context.options.unsafeRaw);
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint endpoint = co_await locate(context.network, target);
        // Read first: a clock that is set by hand is sent along with the server that the card has.
        const TimeReading before = co_await queryTime(context.network, endpoint);
        context.console.note(fmt::format("{}: now {} {}, {:+.1f} s against this machine", target.label,
                                         wordOf(before.reference.mode), before.reference.server, before.skew));
        if (isAsWanted(before.reference)) {
            report(before, result);
            result.hint = "the card takes its time from this server already";
            co_return;
        }
        TimeOptions due = timeOptions;
        due.time = isFixedTime ? timeOptions.time : secondsNow();
        const TimeRequest wanted = planTime(before.reference, due, context.options.unsafeRaw);
        tellWhatGoes(context, target, before.reference, wanted);
        TimeProgress progress;
        const TimePoint start = Clock::now();
        result.changed = std::nullopt; // until the card tells
        try {
            const TimeOutcome outcome = co_await setTimeReference(context.network, endpoint, wanted, progress);
            explain(before.reference, wanted, outcome, result);
            result.changed = whatChanged(before.reference, progress.reading->reference, outcome);
        } catch (Failure& failure) {
            show(progress.reading, result);
            judge(before.reference, wanted, progress, Clock::now() - start, failure, result);
            throw;
        }
        show(progress.reading, result);
    }

private:
    // A clock that is to be set by hand never is: time goes on.
    [[nodiscard]] bool isAsWanted(const TimeReference& now) const
    {
        return timeOptions.mode == TimeMode::ntp && now.mode == TimeMode::ntp && now.server == timeOptions.server;
    }

    static void show(const std::optional<TimeReading>& reading, Result& result)
    {
        if (reading) {
            report(*reading, result);
        }
    }

    static void tellWhatGoes(const Context& context, const Target& target, const TimeReference& before,
                             const TimeRequest& wanted)
    {
        const std::vector<std::string> gone = serversThatGo(before, wanted);
        if (wanted.mode == TimeMode::ntp && !gone.empty()) {
            context.console.note(
                fmt::format("{}: goes from the card's NTP servers: {}", target.label, fmt::join(gone, ", ")));
        }
    }

    static bool isAnother(const TimeReference& before, const TimeReference& now)
    {
        return now.mode != before.mode || now.server != before.server;
    }

    // Nothing if nobody knows: a clock that was set by hand looks like any other.
    static std::optional<bool> whatChanged(const TimeReference& before, const TimeReference& now, TimeOutcome outcome)
    {
        return outcome == TimeOutcome::done || isAnother(before, now) ? std::optional(true) : std::nullopt;
    }

    // Did a card that refuses set its clock before? Nothing if nobody knows: it may have shown that time anyway.
    static std::optional<bool> wasClockSet(const TimeReference& before, const TimeRequest& wanted,
                                           const TimeReference& now, Seconds passed)
    {
        if (wanted.mode != TimeMode::manual) {
            return false;
        }
        const bool isKept = isSameClock(before.time, now.time, passed);
        const bool isWanted = isSameClock(wanted.time, now.time, passed);
        return isKept != isWanted ? std::optional(isWanted) : std::nullopt;
    }

    // A card that refuses may have done a part of it.
    static void judge(const TimeReference& before, const TimeRequest& wanted, const TimeProgress& progress,
                      Seconds passed, Failure& failure, Result& result)
    {
        if (!progress.told) {
            result.changed = false;
            return;
        }
        if (!progress.reading) {
            return;
        }
        const TimeReference& now = progress.reading->reference;
        const bool isOther = isAnother(before, now);
        if (failure.code != ExitCode::refusedByCard) {
            result.changed = isOther ? std::optional(true) : std::nullopt;
            return;
        }
        const std::optional<bool> wasSet = wasClockSet(before, wanted, now, passed);
        result.changed = isOther ? std::optional(true) : wasSet;
        failure.hint +=
            fmt::format("; read back, {} in mode {} with the server \"{}\"{}", isOther ? "it is now" : "it still is",
                        wordOf(now.mode), now.server, aboutClock(wasSet));
    }

    static std::string_view aboutClock(std::optional<bool> wasSet)
    {
        if (!wasSet) {
            return "; whether its clock was set is not known";
        }
        return *wasSet ? ", but its clock was set" : "";
    }

    static void explain(const TimeReference& before, const TimeRequest& wanted, TimeOutcome outcome, Result& result)
    {
        if (outcome == TimeOutcome::doneLate) {
            result.hint = "the card did not answer in time, but has what it was told";
        }
        if (wanted.mode == TimeMode::ntp && before.server != wanted.server) {
            result.hint += result.hint.empty() ? "" : "; ";
            result.hint += "the server is staged, not committed: it is lost with a reboot unless something commits it, "
                           "such as a change of the IP configuration (and it can be set only while the card has the "
                           "setting system.ntp.server)";
        }
    }

    std::optional<std::string> server;
    std::optional<std::string> manual;
    TimeOptions timeOptions;
    bool isFixedTime = false; // else "now", which is when the request leaves
};

} // namespace

std::unique_ptr<Command> makeTimeSet()
{
    return std::make_unique<TimeSetCommand>();
}
