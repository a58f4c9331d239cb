// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Upgrade.h"

#include "client/card/Queries.h"
#include "client/card/ReadBack.h"
#include "client/wire/Phase.h"

namespace
{

constexpr const char* upgrading = "waiting for the end of the upgrade";
constexpr double everythingSent = 100; // percent; of what a script does nothing can be measured

Failure unknown(Failure cause)
{
    cause.phase = upgrading;
    return unknownOutcome("the card took the archive, but it is not known whether it upgraded", std::move(cause));
}

Failure stillUpgrading(bool confirmed)
{
    return {ExitCode::interrupted, Category::interrupted, upgrading,
            confirmed ? "the card goes on with the upgrade all the same"
                      : "the card may go on with the upgrade all the same: it has not confirmed the archive"};
}

Task<void> readVersions(Network& network, Observer& observer, Endpoint endpoint, TimePoint end,
                        std::optional<Versions>& versions)
{
    observer.progress("upgrading", {}, everythingSent);
    versions = co_await inPhase(upgrading, queryVersionsUntil(network, std::move(endpoint), end));
}

} // namespace

// The card serves nobody while it unpacks and upgrades: its next answer is the script's end.
Task<Versions> awaitUpgrade(Network& network, Observer& observer, Endpoint endpoint, Seconds patience,
                            std::optional<Failure> silence)
{
    const TimePoint end = after(patience);
    std::optional<Versions> versions;
    const std::function<Task<void>()> ask = [&] { return readVersions(network, observer, endpoint, end, versions); };
    try {
        const std::optional<Failure> cause = co_await readBack(network.eventLoop(), end, ask);
        if (cause) {
            throw silence ? unread(*silence, *cause) : unknown(*cause);
        }
    } catch (const Interrupted&) {
        throw stillUpgrading(!silence);
    }
    co_return std::move(*versions);
}
