// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/SilentAddress.h"

#include "client/card/Queries.h"
#include "client/wire/HostInterfaces.h"

namespace
{

constexpr const char* answersAsAnother = "answers as a card, but not by this name";

// What one sees of a host that told no versions.
std::string whatWasSeen(const Failure& failure)
{
    if (failure.code == ExitCode::refusedByCard) {
        return answersAsAnother;
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
    case Category::noNetwork:
    case Category::noSocket:
        return "was not looked at: " + failure.hint;
    default:
        return "answers something else than a card";
    }
}

} // namespace

Task<std::string> whatIsAt(Network& network, Endpoint endpoint, TimePoint deadline)
{
    if (!network.admitsProbes()) {
        co_return "was not looked at";
    }
    if (!isInAnyNetwork(endpoint.address)) {
        co_return "is in none of this machine's networks now";
    }
    if (Clock::now() >= deadline) {
        co_return "was not looked at: others took the time";
    }
    try { // one connection: a card that stands still keeps no second one waiting
        co_await queryVersionsUntil(network, endpoint, deadline);
        co_return answersAsAnother;
    } catch (const Failure& failure) {
        co_return whatWasSeen(failure);
    }
}
