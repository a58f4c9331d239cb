// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/card/NameRounds.h"
#include "client/card/Queries.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/cli/LocalFile.h"
#include "client/commands/CardState.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"
#include "client/engine/Slots.h"
#include "client/output/Console.h"
#include "client/plan/VersionsDiff.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

constexpr Seconds betweenLooks{2}; // chosen: a card serves nobody else while it is looked at

enum class Goal { up, down, idle, versions };

// A card as it was last seen.
struct Sight {
    std::string_view state = notFound;
    std::optional<Endpoint> endpoint; // where it is asked, if that is known
    std::string addressFrom;          // what told that, if the target is a name
    std::vector<Component> components;
};

bool isDown(std::string_view state)
{
    return state == daemonDown || state == noConnection || state == unreachable || state == notFound;
}

std::string_view stateOf(PortState port)
{
    if (port == PortState::open) {
        return up;
    }
    return port == PortState::closed ? daemonDown : noConnection;
}

class WaitCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "wait"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        std::vector<Column> all = {{"state"}, {"seconds"}};
        all.emplace_back("address_from").isAside = true; // of the last look, which may be another than the first
        return all;
    }
    [[nodiscard]] bool tellsWhereFrom() const override { return false; }
    [[nodiscard]] bool isPatient() const override { return true; }

    void declareOwn(OptionSet& options) override
    {
        options.value("--for", &wish, "STATE", "what to wait for: up, down, idle, or versions=FILE").required = true;
        options.value("--wait-time", &waitTime, "SECONDS", "how long that may take (120)");
    }

    void prepare(Context& context, const std::vector<Target>& /*targets*/) override
    {
        goal = goalIn(wish);
        rounds.emplace(context.network);
        polls.emplace(context.loop, static_cast<std::size_t>(context.options.parallel));
        start = Clock::now();
        end = after(Seconds(waitTime));
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        context.network.admit(bareRequest(CommandId::versions)); // a dry run ends here
        Sight sight = firstSightOf(target);
        bool wasUp = false;
        // Who is known by a name alone was asked for, in vain, just before.
        for (bool isFresh = !sight.endpoint;; isFresh = false) {
            const TimePoint next = after(betweenLooks); // counted from here, so that silence makes looks no rarer
            if (!isFresh) {
                co_await look(context, target, sight);
            }
            wasUp = wasUp || !isDown(sight.state);
            if (isReached(sight) || Clock::now() >= end) {
                break;
            }
            context.console.progress(target.label, {.phase = std::string(sight.state)});
            co_await context.loop.until(std::min(next, end)); // the last look is when the time is over
        }
        tell(sight, wasUp, result);
    }

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

    [[nodiscard]] bool isReached(const Sight& sight) const
    {
        switch (goal) {
        case Goal::up:
            return !isDown(sight.state);
        case Goal::down:
            return isDown(sight.state);
        case Goal::idle:
            return sight.state == upAndIdle;
        case Goal::versions:
            return sight.state == upAndIdle && unmetExpectations(sight.components, expected).empty();
        }
        return false;
    }

    // Names have been asked for already.
    static Sight firstSightOf(const Target& target)
    {
        Sight sight{.endpoint = target.endpoint, .addressFrom = addressFrom(target), .components = {}};
        if (target.heard) {
            takeAnswer(*target.heard, sight);
        }
        return sight;
    }

    static void takeAnswer(const CardReply& answer, Sight& sight)
    {
        sight.state = up;
        if (answer.address != noAddress) {
            sight.endpoint = Endpoint{answer.address};
            sight.addressFrom = "lookup";
        }
    }

    // A name is asked for where its address is not known, or is silent: the card may have got another one.
    Task<void> look(Context& context, const Target& target, Sight& sight)
    {
        if (sight.endpoint) {
            co_await lookOverTcp(context.network, sight);
        }
        if (isDown(sight.state) && !target.name.empty() && !target.isAddress()) {
            co_await lookByName(context.network, target.name, sight);
        }
    }

    Task<void> lookOverTcp(Network& network, Sight& sight)
    {
        const Slots::Held place = co_await *polls;
        if (goal == Goal::up || goal == Goal::down) {
            const PortState port = co_await network.probe(*sight.endpoint, network.retryPolicy().timeout);
            sight.state = stateOf(port);
            co_return;
        }
        try {
            Versions versions = co_await queryVersionsUntil(network, *sight.endpoint, network.deadline());
            sight.components = std::move(versions.components);
            sight.state = upAndIdle;
        } catch (const Failure& failure) {
            sight.state = ::stateOf(failure);
        }
    }

    // All names whose time has come are asked for together, and take no place of the cards that are looked at.
    Task<void> lookByName(Network& network, std::string name, Sight& sight)
    {
        std::optional<CardReply> answer;
        try {
            answer = co_await rounds->answerOf(name);
        } catch (const Failure&) {
            co_return; // what was seen over TCP stands
        }
        if (!answer) {
            co_return;
        }
        takeAnswer(*answer, sight);
        if (sight.endpoint && goal != Goal::up && goal != Goal::down) {
            co_await lookOverTcp(network, sight);
        }
    }

    void tell(const Sight& sight, bool wasUp, Result& result) const
    {
        result.add("state", std::string(sight.state));
        result.add("seconds", Seconds(Clock::now() - start).count());
        addAddressFrom(sight.addressFrom, result);
        if (!isReached(sight)) {
            throw Failure{ExitCode::noAnswer, Category::timeout, fmt::format("waiting for {}", wish),
                          fmt::format("{} when {:g} s were over", sight.state, waitTime)};
        }
        if (goal == Goal::down && sight.state == noConnection) {
            result.hint = "nothing refuses connections there: a busy card that others wait for looks the same";
        } else if (goal == Goal::down && !wasUp) {
            result.hint = "it was not seen up before: what is no card's address or name looks the same";
        }
    }

    std::string wish;
    double waitTime = 120;
    Goal goal = Goal::up;
    std::vector<Component> expected;
    std::optional<NameRounds> rounds;
    std::optional<Slots> polls; // as many at a time as the user wants
    TimePoint start;
    TimePoint end;
};

} // namespace

std::unique_ptr<Command> makeWait()
{
    return std::make_unique<WaitCommand>();
}
