// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/cli/Context.h"
#include "client/commands/Commands.h"
#include "client/commands/FirmwareCommand.h"

namespace
{

// Unlike all other changes it cannot be read back.
Failure notToldByAnything(Failure silence)
{
    silence.hint += "; whether the card has unpacked the archive is not known, and nothing that it tells shows it";
    return silence;
}

class FirmwareUploadCommand final : public FirmwareCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "firmware upload"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        return {{"bytes"}, {"seconds"}, {"bytes_per_second"}, {"state"}};
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint endpoint = co_await locate(context.network, target);
        const Delivery delivery = co_await sendArchive(context, target, endpoint, CommandId::firmwareUpload, result);
        if (delivery.silence) {
            result.add("state", std::string("unknown"));
            throw notToldByAnything(*delivery.silence);
        }
        result.changed = delivery.sent;
        result.add("state", std::string(delivery.sent ? "unpacked" : "not sent"));
    }
};

} // namespace

std::unique_ptr<Command> makeFirmwareUpload()
{
    return std::make_unique<FirmwareUploadCommand>();
}
