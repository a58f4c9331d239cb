// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/TargetCommand.h"
#include "client/engine/EventLoop.h"

namespace
{

std::string stateOf(const Failure& failure)
{
    if (failure.category == "refused") {
        return "daemon down";
    }
    if (failure.category == "connect-timeout") {
        return "no connection";
    }
    if (failure.code == ExitCode::noAnswer) {
        return "busy";
    }
    return failure.code == ExitCode::unreachable ? "unreachable" : "strange";
}

class StatusCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "status"; }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        TimePoint start = Clock::now();
        bool isFound = false;
        try {
            const Endpoint endpoint = co_await locate(context, target);
            isFound = true;
            start = Clock::now();
            const Versions versions = co_await getVersions(context, endpoint);
            result.malformed = versions.malformed;
        } catch (const Failure& failure) {
            result.add("state", isFound ? stateOf(failure) : "not found");
            result.add("seconds", Cell());
            throw;
        }
        result.add("state", "up and idle");
        result.add("seconds", Seconds(Clock::now() - start).count());
    }
};

} // namespace

std::unique_ptr<Command> makeStatus()
{
    return std::make_unique<StatusCommand>();
}
