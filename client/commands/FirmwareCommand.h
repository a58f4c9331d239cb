// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/commands/TargetCommand.h"
#include "client/engine/EventLoop.h"
#include "client/firmware/Archive.h"
#include "client/model/Failure.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Frame.h"

#include <optional>
#include <string>

// What upload and upgrade share: the archive is checked before any card hears of it, and sent with progress.
class FirmwareCommand : public TargetCommand
{
protected:
    [[nodiscard]] bool changesCards() const final { return true; }
    void declareOwn(OptionSet& options) override;
    void prepare(Context& context, const std::vector<Target>& targets) override;

    [[nodiscard]] std::string planTitle(std::size_t cards) const final;
    Task<std::string> planOf(Context& context, Target target) final; // its versions now

    // How the sending ended, if it did not fail.
    struct Delivery {
        bool sent = false;              // not in a dry run
        std::optional<Failure> silence; // the card has the whole archive, and did not say what it made of it
    };

    // Sends the archive and fills in what the transfer was like.
    Task<Delivery> sendArchive(Context& context, const Target& target, Endpoint endpoint, CommandId command,
                               Result& result);

    [[nodiscard]] Seconds patience() const { return Seconds(patienceSeconds); }

private:
    std::string path;
    double patienceSeconds = 120; // chosen
    int maxSize = 1024;           // MiB
    Archive archive;
};
