// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/cli/Context.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"
#include "client/commands/TimeReport.h"

namespace
{

class TimeGetCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "time get"; }
    [[nodiscard]] std::vector<Column> columns() const override { return timeColumns(); }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint endpoint = co_await locate(context.network, target);
        const TimeReading reading = co_await queryTime(context.network, endpoint);
        report(reading, result);
    }
};

} // namespace

std::unique_ptr<Command> makeTimeGet()
{
    return std::make_unique<TimeGetCommand>();
}
