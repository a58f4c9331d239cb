// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/GlobalOptions.h"
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/TargetCommand.h"
#include "client/output/Console.h"

#include <algorithm>
#include <fmt/core.h>
#include <optional>

namespace
{

constexpr Seconds glance{0.15};     // between two looks at a card that goes down or comes back
constexpr Seconds shortAnswer{0.3}; // from a card that accepts no connection: it may only be busy
constexpr Seconds longestAnswer{4}; // if it did not answer in less
constexpr int enoughSilences = 3;

Failure stayedUp()
{
    return {ExitCode::verification, "stayed-up", "waiting for the card to go down",
            "the card confirmed the reboot, but answered all the time"};
}

Failure notBack()
{
    return {ExitCode::noAnswer, "not-back", "waiting for the card to come back",
            "the card went down, but did not answer again in time"};
}

Failure interruptedReboot(std::string phase)
{
    return {ExitCode::interrupted, "interrupted", std::move(phase), "the card reboots all the same"};
}

class RebootCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "reboot"; }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }
    [[nodiscard]] bool changesCards() const override { return true; }

    void declareOwn(OptionSet& options) override
    {
        options.flag("--wait", wait, "until the card has gone down and come back");
        options.value("--wait-time", &waitTime, "SECONDS", "how long that may take (120)");
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const CardReply card = co_await hearCard(context, target.name, {});
        const std::optional<Endpoint> door = co_await doorOf(context, card);
        std::string phase = "asking for the reboot";
        bool interrupted = false;
        try {
            co_await send(context, target.name, card.interface);
            result.add("state", "rebooting");
            const TimePoint start = Clock::now();
            if (!wait) {
                co_return;
            }
            phase = "waiting for the card to go down";
            co_await seeItGoDown(context, target.name, door, start);
            result.add("down_after", Seconds(Clock::now() - start).count());
            phase = "waiting for the card to come back";
            co_await seeItComeBack(context, target.name, start);
            result.add("back_after", Seconds(Clock::now() - start).count());
        } catch (const Interrupted&) {
            interrupted = true;
        }
        if (interrupted) {
            throw interruptedReboot(phase);
        }
        result.fields.front().value = "back";
    }

private:
    static Task<void> send(Context& context, std::string name, std::string interface)
    {
        Request request = textRequest(CommandId::reboot, rebootXml(name));
        request.changesCard = true;
        ByName how;
        how.onlyInterface = std::move(interface);
        co_await context.network.askByName(name, std::move(request), "asking for the reboot", std::move(how));
    }

    static Task<bool> answersByName(Context& context, std::string name, Seconds patience)
    {
        try {
            co_await getIpConfiguration(context, name, Patience{patience, 0});
        } catch (const Failure& failure) {
            co_return failure.code == ExitCode::refusedByCard || failure.code == ExitCode::protocol;
        }
        co_return true;
    }

    enum class Door { open, closed, silent };

    // Only a door that was open before tells anything when it is closed: the address that a card is heard from may be
    // none, or another host's on the way there. A dry run opens none.
    Task<std::optional<Endpoint>> doorOf(Context& context, const CardReply& card) const
    {
        const Endpoint endpoint{card.address};
        if (!wait || context.options.dryRun || card.address == noAddress) {
            co_return std::nullopt;
        }
        const Door door = co_await tryDoor(context, endpoint);
        co_return door == Door::open ? std::optional(endpoint) : std::nullopt;
    }

    static Task<Door> tryDoor(Context& context, Endpoint endpoint)
    {
        try {
            const TcpConnection connection =
                co_await TcpConnection::open(context.loop, context.console, endpoint, after(glance));
        } catch (const Failure& failure) {
            co_return failure.category == "refused" ? Door::closed : Door::silent;
        }
        co_return Door::open;
    }

    // Down is a card that refuses connections, or from which nothing at all came several times in a row: one silence
    // may be a lost datagram or a busy host. The door is tried first because that costs the card least.
    Task<void> seeItGoDown(Context& context, std::string name, std::optional<Endpoint> endpoint, TimePoint start) const
    {
        int silences = 0;
        while (Seconds(Clock::now() - start).count() < waitTime) {
            const TimePoint next = after(glance);
            Door door = Door::silent;
            if (endpoint) {
                door = co_await tryDoor(context, *endpoint);
            }
            bool answers = door == Door::open;
            if (door == Door::silent) {
                answers = co_await answersByName(context, name, shortAnswer);
            }
            silences = answers ? 0 : silences + 1;
            if (door == Door::closed || silences == enoughSilences) {
                co_return;
            }
            co_await context.loop.until(next);
        }
        throw stayedUp();
    }

    // Asks with growing patience: a card that is slow to answer must not be given up before it does.
    Task<void> seeItComeBack(Context& context, std::string name, TimePoint start) const
    {
        Seconds patience = glance;
        while (Seconds(Clock::now() - start).count() < waitTime) {
            const TimePoint next = after(glance);
            const bool answers = co_await answersByName(context, name, patience);
            if (answers) {
                co_return;
            }
            patience = std::min(longestAnswer, patience * 1.3);
            co_await context.loop.until(next);
        }
        throw notBack();
    }

    bool wait = false;
    double waitTime = 120;
};

} // namespace

std::unique_ptr<Command> makeReboot()
{
    return std::make_unique<RebootCommand>();
}
