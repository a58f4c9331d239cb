// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpChange.h"

#include "client/card/Identity.h"
#include "client/card/IpWatch.h"
#include "client/card/ReadBack.h"
#include "client/model/CalendarTime.h"
#include "client/wire/HostInterfaces.h"
#include "client/wire/Phase.h"

#include <algorithm>
#include <utility>

namespace
{

// Chosen, not measured.
constexpr Seconds restartPause{0.5};    // while a card's network restarts
constexpr Seconds firstResend{5};       // a card that has confirmed nothing may not have heard the change
constexpr double resendGrowth = 2;      // each one restarts its network again
constexpr Seconds shortestRollback{30}; // who gives up too early leaves a card where nobody looks for it

bool isOnLinkHere(const std::vector<BroadcastSocket>& sockets, const std::optional<std::string>& address)
{
    const HostInterfaces here;
    return address && std::ranges::any_of(sockets, [&](const BroadcastSocket& socket) {
               return here.isOnLink(socket.interface(), *address);
           });
}

} // namespace

IpChange::IpChange(Network& newNetwork, Observer& newObserver, std::string newCard)
    : network(newNetwork), observer(newObserver), card(std::move(newCard))
{
}

Task<std::optional<IpConfiguration>> IpChange::readNow()
{
    const CardReply answer = co_await queryCard(network, card);
    onlyInterface = answer.interface;
    if (answer.reply.header.status == static_cast<std::uint8_t>(Status::failure)) {
        co_return std::nullopt;
    }
    co_return ipConfigurationIn(answer);
}

// One answer tells where the card is; whether it is heard over the interface, too, and from where else, only what comes
// beside it.
Task<void> IpChange::lookBefore(InterfaceConfig wanted, std::optional<InterfaceConfig> now)
{
    before = {now, isOnLinkHere(network.openInterfaces(), wanted.address), {}, {}};
    const bool leases = wanted.mode == IpMode::dhcp || (now && now->mode == IpMode::dhcp);
    if (!now || (before.audible && !leases)) {
        co_return;
    }
    IpWatch watch(network, card, Seconds(0));
    const auto hear = [&](int question, const std::optional<CardIp>& answer) {
        if (answer) {
            before.hear(question, *answer);
        }
        return (before.audible && !leases) || question >= enoughQuestions;
    };
    co_await watch.run(hear, network.deadline());
}

// Broadcasts the configuration once; true if the card confirmed it, false if nothing came back. Throws if the card
// refuses.
Task<bool> IpChange::send(InterfaceConfig wanted, std::string interface, Seconds time)
{
    Request request = textRequest(CommandId::ipConfigSet, ipConfigSetXml(card, {wanted}));
    ByName how;
    how.onlyInterface = std::move(interface);
    how.policy = RetryPolicy{std::min(time, network.retryPolicy().timeout), 0};
    const bool wasSentBefore = std::exchange(sent, true);
    try {
        co_await inPhase("changing the IP configuration", network.askByName(card, std::move(request), std::move(how)));
    } catch (const Failure& failure) {
        // What did not leave this time takes nothing back of what left before.
        sent = wasSentBefore || !wasNotSent(failure);
        if (failure.code != ExitCode::noAnswer) {
            throw;
        }
        co_return false;
    }
    co_return true;
}

// Who asks for it when it is silent is told where it was reached last, and not where it was before the change.
void IpChange::remember(const CardIp& answer)
{
    if (HostInterfaces().isInNetworkOf(answer.interface, answer.address)) {
        lastHeard.note(card, {answer.address, secondsNow(), answer.interface});
    }
}

// Asks until the answers prove the wanted configuration, or the time is over.
Task<Proof> IpChange::awaitProof(InterfaceConfig wanted, TimePoint deadline)
{
    IpEvidence evidence(std::move(wanted), before);
    IpWatch watch(network, card, restartPause);
    const auto hear = [&](int question, const std::optional<CardIp>& answer) {
        if (answer) {
            evidence.hear(question, *answer);
            remember(*answer);
        } else {
            evidence.hearRefusal();
        }
        return evidence.isEnough();
    };
    co_await watch.run(hear, deadline);
    if (evidence.lastSeen()) {
        lastHeard.save();
        seen = evidence.lastSeen();
    }
    co_return evidence.proof();
}

Task<IpOutcome> IpChange::run(IpPlan plan, Seconds time)
{
    // What can be heard over the interface is seen only as long as it is as it was.
    co_await lookBefore(plan.wanted, plan.now);
    const bool confirmed = co_await send(plan.wanted, onlyInterface, network.retryPolicy().timeout);
    if (!confirmed) {
        observer.note("no answer to the change; looking for its effect");
    }
    const Proof proof = co_await awaitProof(plan.wanted, after(time));
    if (proof != Proof::none) {
        co_return proof == Proof::applied ? IpOutcome::applied : IpOutcome::stored;
    }
    if (!plan.rollback) {
        co_return IpOutcome::lost;
    }
    observer.warning("not back with the new configuration; rolling back");
    Proof back = Proof::none;
    try {
        back = co_await force(*plan.rollback, std::max(time, shortestRollback));
    } catch (const Failure& failure) {
        if (isOfThisMachine(failure)) {
            throw;
        }
        refusal = failure.hint; // a card that refuses its former configuration is lost like one that is not heard
    }
    if (back == Proof::none) {
        co_return IpOutcome::lost;
    }
    co_return back == Proof::applied ? IpOutcome::rolledBack : IpOutcome::rollbackStored;
}

Failure IpChange::explain(Failure failure) const
{
    const bool isOpen = sent && isOfThisMachine(failure);
    return isOpen ? unknownOutcome("the change was sent, but what the card has now is not known", std::move(failure))
                  : failure;
}

Task<Proof> IpChange::force(InterfaceConfig wanted, Seconds time)
{
    const TimePoint deadline = after(time);
    Seconds patience = firstResend;
    while (Clock::now() < deadline) {
        // On all interfaces, since nobody knows where the card is; and for half of the time at most, because its answer
        // may be lost, and its effect be seen.
        co_await send(wanted, "", (deadline - Clock::now()) / 2);
        const Proof proof = co_await awaitProof(wanted, std::min(deadline, after(patience)));
        if (proof == Proof::stored && before.audible) { // what can be heard is waited for
            const Proof later = co_await awaitProof(wanted, deadline);
            co_return std::max(proof, later);
        }
        if (proof != Proof::none) {
            co_return proof;
        }
        patience *= resendGrowth;
    }
    co_return Proof::none;
}
