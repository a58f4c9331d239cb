// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Frame.h"

// What a dry run keeps from being sent: what changes a card, or everything for commands that only read.
enum class DryRun { off, changes, everything };

// Thrown instead of contacting a card in a dry run.
struct NotSent {
    Request request;
};

// Stands in front of every socket: no connection is opened, and no datagram sent, for a request that it does not
// admit. The one place that knows of dry runs, so that nothing built on top of it can forget them.
class SendGate
{
public:
    explicit SendGate(DryRun newMode = DryRun::off) : mode(newMode) {}

    // Throws NotSent for a request that must not leave.
    void admit(const Request& request) const;
    // May a card be contacted without a request?
    [[nodiscard]] bool admitsProbes() const { return mode == DryRun::off; }

private:
    DryRun mode;
};
