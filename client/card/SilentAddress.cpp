// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/SilentAddress.h"

#include "client/card/Identity.h"
#include "client/card/Queries.h"
#include "client/model/CalendarTime.h"
#include "client/wire/CausesOfSilence.h"
#include "client/wire/HostInterfaces.h"

#include <fmt/core.h>

namespace
{

std::string asACard(Asking asking)
{
    return asking == Asking::done ? "answers as a card, but not by this name"
                                  : "answers as a card; the name could not be asked for there";
}

// What one sees of a host that told no versions.
std::string whatWasSeen(const Failure& failure, Asking asking)
{
    if (failure.code == ExitCode::refusedByCard) {
        return asACard(asking);
    }
    switch (failure.category) {
    case Category::timeout:
        return "accepts connections and does not answer";
    case Category::closed:
        return "accepts connections and closes them without an answer";
    case Category::refused:
        return "refuses connections";
    case Category::connectTimeout:
    case Category::noRoute:
        return "takes no connection";
    case Category::noInterface:
    case Category::noNetwork:
    case Category::noSocket:
        return "was not looked at: " + failure.hint;
    default:
        return "answers something else than a card";
    }
}

} // namespace

Silence neverHeard()
{
    return {{ExitCode::noAnswer, Category::notFound, lookingForCard,
             fmt::format("nobody answered by this name: {}", causesOfSilence())},
            {}};
}

Silence silenceSince(const LastHeard::Hearing& last, const std::string& thereNow)
{
    const bool isUnreachable = last.address == noAddress;
    Silence silence;
    silence.failure = {ExitCode::noAnswer, Category::notHeard, lookingForCard,
                       isUnreachable ? "not heard; last from where no connection leads to it"
                                     : fmt::format("not heard; last at an address that {}", thereNow)};
    silence.fields.push_back({"last_address", isUnreachable ? Cell() : last.address, true});
    silence.fields.push_back({"last_heard", ageText(secondsNow() - last.moment) + " ago", true});
    silence.fields.push_back({"there_now", isUnreachable ? Cell() : thereNow});
    return silence;
}

Task<std::string> whatIsAt(Network& network, Endpoint endpoint, Asking asking, TimePoint deadline)
{
    if (!network.admitsProbes()) {
        co_return "was not looked at";
    }
    const HostInterfaces here;
    if (!here.isInAnyNetwork(endpoint.address)) {
        co_return "is in none of this machine's networks now";
    }
    if (endpoint.interface.empty()) {
        co_return "was not looked at: on which network it was heard is not known";
    }
    if (!here.isInNetworkOf(endpoint.interface, endpoint.address)) {
        co_return fmt::format("was not looked at: it is in no network of {} now", endpoint.interface);
    }
    if (Clock::now() >= deadline) {
        co_return "was not looked at: others took the time";
    }
    try { // one connection: a card that stands still keeps no second one waiting
        co_await queryVersionsUntil(network, endpoint, deadline);
        co_return asACard(asking);
    } catch (const Failure& failure) {
        co_return whatWasSeen(failure, asking);
    }
}
