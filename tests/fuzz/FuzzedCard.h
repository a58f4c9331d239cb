// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "services/TarvelServiceUdp.h"
#include "support/CapturedLog.h"
#include "support/FakeClock.h"
#include "support/FakeSystem.h"
#include "support/FakeUci.h"
#include "support/LoopbackPeer.h"
#include "support/Sandbox.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

// A card of paper that is fed with anything at all. Each feeding returns what has gone wrong, or an empty text; memory
// errors and the like are left to the sanitizers.
class FuzzedCard
{
public:
    FuzzedCard();

    // One datagram, from the socket to the reply. Whatever it holds, there is at most one reply, of the kind that its
    // header calls for; no text of it that the shell could take for more than a word reaches a command, and nothing at
    // all does that is for another card.
    std::string feedDatagram(std::span<const std::uint8_t> bytes);

    // Several, each behind its length in two bytes. No descriptor is left.
    std::string feedSession(std::span<const std::uint8_t> bytes);

    // One XML text, as the envelope, the interfaces and the time reference read it.
    std::string feedDocument(std::span<const std::uint8_t> bytes);

private:
    void forgetThePast();
    std::string checkReply(std::span<const std::uint8_t> request);

    Sandbox sandbox;
    FakeSystem shell;
    FakeUci uci{shell};
    FakeClock clock;
    CapturedLog log;
    std::unique_ptr<TarvelServiceUdp> service;
    UdpPeer requester;
};
