// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/IpEvidence.h"
#include "client/card/LastHeard.h"
#include "client/card/Observer.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/messages/IpConfiguration.h"
#include "client/plan/IpPlan.h"
#include "client/wire/Network.h"

#include <optional>
#include <string>

// How a change ended. `rollbackStored`: only the settings say that the card has the former configuration again. `lost`:
// it has neither the new nor, if there was one to go back to, the former.
enum class IpOutcome { applied, stored, rolledBack, rollbackStored, lost };

// Changing an interface of a card and seeing it through. Lives as long as its tasks.
class IpChange
{
public:
    IpChange(Network& newNetwork, Observer& newObserver, std::string newCard);

    // What the card has now; nothing if it refuses to tell, which must not keep it from being set. Notes on which
    // interface the card was heard, where the change will be sent: a card that hears it twice would do it twice.
    Task<std::optional<IpConfiguration>> readNow();

    // Sends the change once, asks until the card answers with it, and, if the time is over, sends the rollback, for
    // which a card may always take half a minute. Throws if the card refuses the change.
    Task<IpOutcome> run(IpPlan plan, Seconds time);

    // Hears how the card answers as long as the interface is as now; `run` does so itself.
    Task<void> lookBefore(InterfaceConfig wanted, std::optional<InterfaceConfig> now);

    // Sends and asks in turns until the card has the configuration or the time is over; reaches a card whatever its
    // address is. Throws if the card refuses.
    Task<Proof> force(InterfaceConfig wanted, Seconds time);

    // What the card answered last, and why it refused the rollback.
    [[nodiscard]] const std::optional<InterfaceConfig>& lastSeen() const { return seen; }
    // Has anything left this machine that changes the card?
    [[nodiscard]] bool isSent() const { return sent; }
    // A failure as it is told: once a card was told, one of this machine leaves open what the card has.
    [[nodiscard]] Failure explain(Failure failure) const;
    [[nodiscard]] const std::string& rollbackRefusal() const { return refusal; }

private:
    Task<bool> send(InterfaceConfig wanted, std::string interface, Seconds time);
    Task<Proof> awaitProof(InterfaceConfig wanted, TimePoint deadline);
    void remember(const CardIp& answer);

    Network& network;
    Observer& observer;
    std::string card;
    std::string onlyInterface;
    IpBefore before;
    std::optional<InterfaceConfig> seen;
    LastHeard lastHeard;
    std::string refusal;
    bool sent = false;
};
