// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/cli/Context.h"
#include "client/commands/Commands.h"
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
    [[nodiscard]] std::vector<Column> columns() const override
    {
        return {{"heard_from"}, {"heard_on"}, {"interface"}, {"mode"}, {"address"}, {"netmask"}, {"gateway"}};
    }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        std::optional<CardReply> card = target.heard; // the lookup has asked the very question
        if (!card) {
            card = co_await queryCard(context.network, target.name);
        }
        const IpConfiguration configuration = ipConfigurationIn(*card);
        result.malformed = configuration.malformed;
        result.add("heard_from", card->address);
        result.add("heard_on", card->interface);
        result.listName = "interfaces";
        for (const InterfaceConfig& interface : configuration.interfaces) {
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
