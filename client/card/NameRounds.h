// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Lookup.h"
#include "client/engine/Signal.h"
#include "client/engine/Task.h"
#include "client/wire/Network.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// Names that are asked for again and again, each when its time comes. Those whose time comes at about the same moment
// share one Lookup.
class NameRounds
{
public:
    explicit NameRounds(Network& newNetwork) : network(newNetwork) {}

    // As Lookup::answerOf.
    Task<std::optional<CardReply>> answerOf(std::string name);

private:
    struct Round {
        explicit Round(EventLoop& loop) : isClosed(loop) {}

        std::vector<std::string> names;
        Signal isClosed; // nobody comes any more
        std::optional<Lookup> lookup;
        std::optional<Task<void>> asking;
    };

    Task<void> gather(Round& round);

    Network& network;
    std::shared_ptr<Round> open; // for whoever comes next; a round lives as long as somebody waits for it
};
