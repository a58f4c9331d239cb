// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Lookup.h"

#include "client/card/Ambiguity.h"
#include "client/card/Identity.h"
#include "client/model/CalendarTime.h"

#include <algorithm>
#include <chrono>
#include <fmt/core.h>

Lookup::Lookup(Network& newNetwork, const std::vector<std::string>& names, std::optional<RetryPolicy> newPolicy)
    : network(newNetwork), policy(newPolicy.value_or(newNetwork.retryPolicy()))
{
    std::for_each(names.begin(), names.end(), [&](const std::string& name) { add(name); });
    if (!asked.empty()) {
        lastHeard = LastHeard::load();
    }
}

void Lookup::add(const std::string& name)
{
    asked.emplace_back(Asked{.name = name, .questions = {}, .answers = {}, .isOver = Signal(network.eventLoop())});
}

Task<void> Lookup::run(std::size_t enough)
{
    wanted = std::min(enough, asked.size());
    try {
        co_await askAll();
        co_await listenOut();
    } catch (...) {
        error = std::current_exception();
    }
    save();
    for (Asked& one : asked) {
        one.isOver.set();
    }
}

Task<void> Lookup::hearOut()
{
    hearsOut = true;
    co_await run();
}

const std::vector<CardReply>& Lookup::answersTo(const std::string& name)
{
    if (error) {
        std::rethrow_exception(error);
    }
    return entryOf(name).answers;
}

// The first answer need not be the one that a way leads to.
void Lookup::remember(Asked& one, const CardReply& answer)
{
    if (one.hasWay) {
        return;
    }
    const std::optional<Endpoint> way = wayTo(answer, latestLook);
    if (!way && one.answers.size() > 1) {
        return;
    }
    one.hasWay = way.has_value();
    lastHeard.note(one.name, {way ? way->address : std::string(noAddress), secondsNow(), answer.interface});
    isNews = true;
}

void Lookup::save()
{
    if (isNews && network.admitsProbes()) { // a dry run writes no file
        lastHeard.save();
        isNews = false;
    }
}

Lookup::Asked& Lookup::entryOf(const std::string& name)
{
    return *std::find_if(asked.begin(), asked.end(), [&](const Asked& one) { return one.name == name; });
}

Task<std::optional<CardReply>> Lookup::answerOf(std::string name)
{
    Asked& one = entryOf(name);
    co_await one.isOver;
    if (one.answers.empty() && error) {
        std::rethrow_exception(error);
    }
    co_return one.answers.empty() ? std::nullopt : std::optional(one.answers.front());
}

std::optional<Failure> Lookup::unasked(const std::string& interface) const
{
    const auto isThere = [&](const BroadcastSocket& socket) { return socket.interface() == interface; };
    if (notAsked || interface.empty() || std::ranges::any_of(sockets, isThere)) {
        return notAsked;
    }
    return Failure{ExitCode::unreachable, Category::noInterface, lookingForCard,
                   fmt::format("nobody was asked on {}, where the card was heard", interface)};
}

std::vector<std::string> Lookup::secondAnswers()
{
    latestLook = {};
    for (const BroadcastSocket& socket : sockets) {
        Listening ended(Clock::now());
        while (ended.takesOneMore(1)) {
            const std::optional<Datagram> datagram = socket.receive();
            if (!datagram) {
                break;
            }
            take(*datagram);
        }
    }
    save();
    std::vector<std::string> doubts;
    for (const Asked& one : asked) {
        const std::optional<std::string> why = ambiguityOf(one.answers);
        if (why) {
            doubts.push_back(fmt::format("{}: {}", one.name, *why));
        }
    }
    return doubts;
}

Task<CardReply> Lookup::reachableAnswerOf(std::string name)
{
    Asked& one = entryOf(name);
    CardReply answer = co_await reachableAnswer(network, std::move(name), one.answers.front());
    if (!one.hasWay) {
        latestLook = {}; // it was waited for
        remember(one, answer);
    }
    save();
    co_return answer;
}

// The interface of a hearing that does not tell it, if there is no doubt.
std::string Lookup::interfaceOf(const LastHeard::Hearing& hearing) const
{
    if (!hearing.interface.empty()) {
        return hearing.interface;
    }
    const HostInterfaces here;
    const auto isMeant = [&](const BroadcastSocket& socket) {
        return here.isInNetworkOf(socket.interface(), hearing.address);
    };
    const auto found = std::ranges::find_if(sockets, isMeant);
    return std::ranges::count_if(sockets, isMeant) == 1 ? found->interface() : "";
}

Task<Silence> Lookup::explainSilence(std::string name)
{
    const std::optional<LastHeard::Hearing> last = lastHeard.of(name);
    if (!last) {
        co_return neverHeard();
    }
    std::string thereNow;
    if (last->address != noAddress) {
        explained = explained.value_or(network.deadline());
        const Endpoint there{last->address, cardPort, interfaceOf(*last)};
        const Asking asking = unasked(there.interface) ? Asking::inVain : Asking::done;
        thereNow = co_await whatIsAt(network, there, asking, *explained);
    }
    co_return silenceSince(*last, thereNow);
}
