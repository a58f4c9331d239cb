// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/FirmwareCommand.h"

namespace
{

class FirmwareUploadCommand final : public FirmwareCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "firmware upload"; }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint endpoint = co_await locate(context, target);
        const bool sent = co_await sendArchive(context, target, endpoint, CommandId::firmwareUpload, result);
        result.add("state", std::string(sent ? "unpacked" : "not sent"));
    }
};

} // namespace

std::unique_ptr<Command> makeFirmwareUpload()
{
    return std::make_unique<FirmwareUploadCommand>();
}
