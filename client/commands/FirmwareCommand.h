// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/commands/TargetCommand.h"
#include "client/engine/EventLoop.h"
#include "client/firmware/Archive.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Frame.h"

#include <string>

// What upload and upgrade share: the archive is checked before any card hears of it, and sent with progress.
class FirmwareCommand : public TargetCommand
{
protected:
    [[nodiscard]] bool changesCards() const final { return true; }
    void declareOwn(OptionSet& options) final;
    void prepare(Context& context, const std::vector<Target>& targets) final;

    // Sends the archive and fills in what the transfer was like. False in a dry run, which sends nothing.
    Task<bool> sendArchive(Context& context, const Target& target, Endpoint endpoint, CommandId command,
                           Result& result);

    [[nodiscard]] Seconds patience() const { return Seconds(patienceSeconds); }

private:
    std::string path;
    double patienceSeconds = 120;
    Archive archive;
};
