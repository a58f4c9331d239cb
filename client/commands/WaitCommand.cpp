// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/CardWatch.h"
#include "client/card/LookTimes.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/cli/LocalFile.h"
#include "client/commands/Commands.h"
#include "client/commands/NameCost.h"
#include "client/commands/TargetCommand.h"
#include "client/output/Console.h"
#include "client/plan/VersionsDiff.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

enum class Goal { up, down, idle, versions };

class WaitCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "wait"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        std::vector<Column> all = {{"state"}, {"seconds"}};
        // Of the last look, which may be another than the first.
        all.emplace_back("address_from").shown = Shown::inCsvOnly;
        return all;
    }
    [[nodiscard]] bool tellsWhereFrom() const override { return false; }
    [[nodiscard]] bool isPatient() const override { return true; }
    // Names are asked for again and again, and a machine that cannot ask for them now perhaps can later.
    [[nodiscard]] bool looksUpNames() const override { return false; }

    void declareOwn(OptionSet& options) override
    {
        options.value("--for", &wish, "STATE", "what to wait for: up, down, idle, or versions=FILE").required = true;
        options.value("--wait-time", &waitTime, "SECONDS", "how long that may take (120)");
    }

    void prepare(Context& context, const std::vector<Target>& targets) override
    {
        goal = goalIn(wish);
        const auto hasNoAddress = [](const Target& target) { return !target.endpoint; };
        const auto names = static_cast<std::size_t>(std::ranges::count_if(targets, hasNoAddress));
        noteCostOfNames(context.console, context.options.dryRun ? 0 : names);
        watch.emplace(context.loop, context.network, question(), static_cast<std::size_t>(context.options.parallel));
        start = Clock::now();
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        context.network.admit(bareRequest(CommandId::versions)); // a dry run ends here
        const LookTimes times(start, Seconds(waitTime));
        Sight sight;
        sight.endpoint = target.endpoint;
        bool wasUp = false;
        for (;;) {
            const TimePoint beginning = Clock::now();
            co_await watch->look(target, sight);
            wasUp = wasUp || (!sight.hindrance && !isDown(sight.state));
            if (isReached(sight) || times.areOver(Clock::now())) {
                break;
            }
            context.console.progress(target.label, {.phase = std::string(wordsNow(sight))});
            co_await context.loop.until(times.nextAfter(beginning));
        }
        tell(target, sight, wasUp, result);
    }

    std::set<std::string> secondAnswers() override { return watch->secondAnswers(); }

private:
    Goal goalIn(const std::string& text)
    {
        constexpr std::string_view ofVersions = "versions=";
        if (text.starts_with(ofVersions)) {
            const std::string path = text.substr(ofVersions.size());
            expected = parseExpectedVersions(readLocalFile(path), path);
            return Goal::versions;
        }
        if (text == "up" || text == "down") {
            return text == "up" ? Goal::up : Goal::down;
        }
        if (text != "idle") {
            throw usageFailure(fmt::format("--for is up, down, idle or versions=FILE, not \"{}\"", text));
        }
        return Goal::idle;
    }

    static std::string_view wordsNow(const Sight& sight)
    {
        return sight.hindrance ? "cannot be looked at from here" : wordsOf(sight.state);
    }

    [[nodiscard]] bool isReached(const Sight& sight) const
    {
        if (sight.hindrance) {
            return false;
        }
        switch (goal) {
        case Goal::up:
            return !isDown(sight.state);
        case Goal::down:
            return isDown(sight.state);
        case Goal::idle:
            return sight.state == CardState::upAndIdle;
        case Goal::versions:
            return sight.state == CardState::upAndIdle && unmetExpectations(sight.components, expected).empty();
        }
        return false;
    }

    [[nodiscard]] CardWatch::Question question() const
    {
        const bool isConnection = goal == Goal::up || goal == Goal::down;
        return isConnection ? CardWatch::Question::connection : CardWatch::Question::versions;
    }

    void tell(const Target& target, const Sight& sight, bool wasUp, Result& result) const
    {
        if (!sight.hindrance) {
            result.add("state", std::string(wordsOf(sight.state)));
        }
        result.add("seconds", Seconds(Clock::now() - start).count());
        addAddressFrom(sight.isLookedUp ? "lookup" : addressFrom(target), result);
        if (sight.hindrance) {
            throw Failure(*sight.hindrance);
        }
        if (!isReached(sight)) {
            throw Failure{ExitCode::noAnswer, Category::timeout, fmt::format("waiting for {}", wish),
                          fmt::format("{} when {:g} s were over", wordsOf(sight.state), waitTime)};
        }
        if (goal == Goal::down) {
            result.hint = whatLooksTheSame(sight.state, wasUp);
        }
    }

    // What else a card that counts as down may be.
    static std::string whatLooksTheSame(CardState state, bool wasUp)
    {
        if (state == CardState::notFound) {
            return fmt::format("not heard by its name{}, and no address is known to look at: {}a card that is busy, or "
                               "whose daemon stands still, looks the same",
                               wasUp ? "" : ", now or before", wasUp ? "" : "what is no card's name, or ");
        }
        if (state == CardState::noConnection) {
            return "nothing refuses connections there: a busy card that others wait for looks the same";
        }
        return wasUp ? "" : "it was not seen up before: what is no card's address or name looks the same";
    }

    std::string wish;
    double waitTime = 120;
    Goal goal = Goal::up;
    std::vector<Component> expected;
    std::optional<CardWatch> watch;
    TimePoint start;
};

} // namespace

std::unique_ptr<Command> makeWait()
{
    return std::make_unique<WaitCommand>();
}
