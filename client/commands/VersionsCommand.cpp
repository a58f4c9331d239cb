// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/TargetCommand.h"

namespace
{

class VersionsCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "versions"; }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        Endpoint endpoint = co_await locate(context, target);
        const Versions versions = co_await getVersions(context, std::move(endpoint));
        result.listName = "components";
        for (const Component& component : versions.components) {
            result.list.push_back({{"component", component.id}, {"version", component.version}});
        }
    }
};

} // namespace

std::unique_ptr<Command> makeVersions()
{
    return std::make_unique<VersionsCommand>();
}
