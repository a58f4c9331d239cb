// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "services/TarvelServiceTcp.h"
#include "support/CapturedLog.h"
#include "support/FakeClock.h"
#include "support/FakeSystem.h"
#include "support/FakeUci.h"
#include "support/SampleMessages.h"
#include "support/Sandbox.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>

// A card of paper whose connection is fed with anything at all. Each feeding returns what has gone wrong, as in
// FuzzedCard.
class FuzzedConnection
{
public:
    FuzzedConnection();

    // All that a client sends before it ends its side, as many messages as that is. To each there is at most one reply,
    // of the kind that its header calls for; the connection ends when the rules say so, and no descriptor is left.
    std::string feedStream(std::span<const std::uint8_t> bytes);

    // What part numbers and versions are read from, each piece up to an RS (0x1E): the start of the flash, three files,
    // then names and contents of installed components. Whatever is in them, the report is a text that fits.
    std::string feedSources(std::span<const std::uint8_t> bytes);

private:
    // What came of one message.
    struct Exchange {
        SampleHeader request;
        std::size_t waiting = 0; // bytes of the client, with the header
        Bytes reply;
        bool isOpen = false; // afterwards
    };

    Exchange serve();
    void connect(std::span<const std::uint8_t> bytes);
    void writeSources(std::map<std::string, std::string> files);

    Sandbox sandbox;
    FakeSystem shell;
    FakeUci uci{shell};
    FakeClock clock;
    CapturedLog log;
    TarvelServiceTcp service;
    int client = -1;
    std::map<std::string, std::string> sources; // as they are, by name
};
