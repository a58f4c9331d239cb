// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/CardState.h"
#include "client/card/Identity.h"
#include "client/card/Queries.h"
#include "client/cli/Context.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"

namespace
{

class StatusCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "status"; }
    [[nodiscard]] std::vector<Column> columns() const override { return {{"state"}, {"seconds"}}; }

    void tellNotFound(Result& result) override
    {
        result.add("state", std::string(wordsOf(CardState::notFound)));
        result.add("seconds", Cell());
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        TimePoint start = Clock::now();
        try {
            const Endpoint endpoint = co_await locate(context.network, target);
            start = Clock::now(); // how long the card takes: to find it was this machine's affair
            const Versions versions = co_await queryVersions(context.network, endpoint);
            result.malformed = versions.malformed;
        } catch (const Failure& failure) {
            result.add("state", isOfThisMachine(failure) ? Cell() : std::string(wordsOf(stateOf(failure))));
            result.add("seconds", Cell());
            throw; // the state is data, and whatever is not idle is a failure for a script all the same
        }
        result.add("state", std::string(wordsOf(CardState::upAndIdle)));
        result.add("seconds", Seconds(Clock::now() - start).count());
    }
};

} // namespace

std::unique_ptr<Command> makeStatus()
{
    return std::make_unique<StatusCommand>();
}
