// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/GlobalOptions.h"
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/TargetCommand.h"
#include "client/commands/TimeReport.h"
#include "client/output/Console.h"
#include "client/plan/TimePlan.h"

#include <chrono>
#include <cmath>
#include <fmt/core.h>

namespace
{

std::int64_t secondsNow()
{
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

Failure interruptedSetting()
{
    return {ExitCode::interrupted, "interrupted", "setting the time reference",
            "the card may have the new time reference or the former one; `tarvelctl time get` tells"};
}

Failure notTaken(std::string hint)
{
    return {ExitCode::verification, "not-taken", "reading the time reference back", std::move(hint)};
}

class TimeSetCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "time set"; }
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
        wish.manual = manual.has_value();
        wish.server = server.value_or("");
        wish.time = secondsNow();
        if (manual && *manual != "now") {
            const std::optional<std::int64_t> time = parseTime(*manual);
            if (!time) {
                throw usageFailure(fmt::format("\"{}\" is no time such as 2026-03-04T05:06:07Z", *manual));
            }
            wish.time = *time;
            isFixedTime = true;
        }
        checkTimeWish(wish, context.options.unsafeRaw);
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint endpoint = co_await locate(context, target);
        const TimeReading before = co_await readTime(context, endpoint);
        context.console.note(fmt::format("{}: now {} {}, {:+.1f} s against this machine", target.label,
                                         before.reference.mode, before.reference.server, before.skew));
        if (!wish.manual && before.reference.mode == "Ntp" && before.reference.server == wish.server) {
            report(before, result);
            throw nothingToDo("the card takes its time from this server already");
        }
        TimeWish due = wish;
        due.time = isFixedTime ? wish.time : secondsNow();
        const TimeRequest wanted = planTime(before.reference, due, context.options.unsafeRaw);
        bool interrupted = false;
        try {
            co_await setAndVerify(context, endpoint, wanted, result);
        } catch (const Interrupted&) {
            interrupted = true;
        }
        if (interrupted) {
            throw interruptedSetting();
        }
        explain(before.reference, wanted, result);
    }

private:
    static Task<void> setAndVerify(Context& context, Endpoint endpoint, TimeRequest wanted, Result& result)
    {
        co_await send(context, endpoint, wanted);
        const TimePoint setAt = Clock::now();
        const TimeReading reading = co_await readTime(context, endpoint);
        report(reading, result);
        verify(wanted, reading, Seconds(Clock::now() - setAt));
    }

    static Task<void> send(Context& context, Endpoint endpoint, TimeRequest wanted)
    {
        Request request = textRequest(CommandId::timeReferenceSet, timeReferenceSetXml(wanted));
        request.changesCard = true;
        co_await context.network.ask(std::move(endpoint), std::move(request), "setting the time reference");
    }

    static void verify(const TimeRequest& wanted, const TimeReading& reading, Seconds passed)
    {
        constexpr double tolerance = 2; // seconds; the card tells whole ones
        const std::string& server = reading.reference.server;
        if (reading.reference.mode != wanted.mode) {
            throw notTaken(fmt::format("the card is in mode {}, not {}", reading.reference.mode, wanted.mode));
        }
        if (server != (wanted.server.empty() ? noNtpServer : wanted.server)) {
            throw notTaken(fmt::format("the card has the server \"{}\", not \"{}\"", server, wanted.server));
        }
        const auto off = static_cast<double>(reading.reference.time - wanted.time);
        if (wanted.mode == "Manual" && (off < -tolerance || off > passed.count() + tolerance)) {
            throw notTaken(fmt::format("the card's clock is {:.0f} s from what it was set to", off));
        }
    }

    static void explain(const TimeReference& before, const TimeRequest& wanted, Result& result)
    {
        if (wanted.mode == "Ntp" && before.server != wanted.server) {
            result.hint = "the server is staged, not committed: it is lost with a reboot unless something commits it, "
                          "such as a change of the IP configuration (and it can be set only while the card has the "
                          "setting system.ntp.server)";
        }
    }

    std::optional<std::string> server;
    std::optional<std::string> manual;
    TimeWish wish;
    bool isFixedTime = false; // else "now", which is when the request leaves
};

} // namespace

std::unique_ptr<Command> makeTimeSet()
{
    return std::make_unique<TimeSetCommand>();
}
