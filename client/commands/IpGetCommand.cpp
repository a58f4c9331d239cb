// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/TargetCommand.h"

namespace
{

Cell cellOf(const std::optional<std::string>& text)
{
    return text ? Cell(*text) : Cell();
}

class IpGetCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "ip get"; }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const CardIp card = co_await getIpConfiguration(context, target.name);
        result.malformed = card.configuration.malformed;
        result.add("heard_from", card.address);
        result.add("heard_on", card.interface);
        result.listName = "interfaces";
        for (const InterfaceConfig& interface : card.configuration.interfaces) {
            result.list.push_back({{"interface", interface.name},
                                   {"mode", std::string(wordOf(interface.mode))},
                                   {"address", cellOf(interface.address)},
                                   {"netmask", cellOf(interface.netmask)},
                                   {"gateway", cellOf(interface.gateway)}});
        }
    }
};

} // namespace

std::unique_ptr<Command> makeIpGet()
{
    return std::make_unique<IpGetCommand>();
}
