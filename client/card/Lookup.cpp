// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Lookup.h"

#include "client/card/Ambiguity.h"
#include "client/card/Identity.h"
#include "client/model/CalendarTime.h"
#include "client/wire/HostInterfaces.h"

#include <algorithm>
#include <chrono>
#include <fmt/core.h>

namespace
{

// A card reads about 330 requests of a burst of a thousand: its socket's buffer holds no more while it answers. Fifty
// leave room for what others ask.
constexpr std::size_t mostInBurst = 50;
constexpr Seconds burstTime{0.1};
constexpr Seconds listening{0.3}; // chosen: from the first answer on; a card answers within milliseconds

// Of one name: two are one too many already, and who floods shall not fill this machine's memory.
constexpr std::size_t mostAnswers = 100;

} // namespace

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
    asked.emplace_back(Asked{.name = name, .requests = {}, .answers = {}, .isOver = Signal(network.eventLoop())});
}

// A card that answers two requests is not two cards.
void Lookup::ask(Asked& one)
{
    // A number that is taken would give one name the other's answers.
    Request request;
    do {
        request = textRequest(CommandId::ipConfigGet, ipConfigGetXml(one.name));
    } while (!bySequence.emplace(request.header.sequenceId, &one).second);
    std::optional<Failure> here =
        network.broadcast(sockets, request, hearsOut ? Reach::allInterfaces : Reach::anyInterface);
    if (here) {
        notAsked = std::move(here);
    }
    one.requests.push_back(std::move(request));
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

Task<void> Lookup::askAll()
{
    if (asked.empty()) {
        co_return;
    }
    sockets = network.openInterfaces();
    notAsked = network.leftOut();
    const int attempts = policy.retries + 1;
    co_await askUnheard();
    const TimePoint start = Clock::now();
    for (int attempt = 1; attempt <= attempts && !isDone(); ++attempt) {
        const auto share = policy.timeout * attempt / attempts;
        co_await listen(start + std::chrono::duration_cast<Clock::duration>(share));
        if (attempt < attempts) {
            co_await askUnheard();
        }
    }
}

Task<void> Lookup::askUnheard()
{
    std::size_t inBurst = 0;
    for (Asked& one : asked) {
        if (inBurst == mostInBurst) {
            co_await listen(after(burstTime));
            inBurst = 0;
        }
        if (isDone()) {
            co_return;
        }
        if (one.answers.empty()) {
            ask(one);
            ++inBurst;
        }
    }
}

Task<void> Lookup::listen(TimePoint deadline)
{
    Listening time(deadline);
    while (!isDone()) {
        const std::optional<Datagram> datagram = co_await network.receive(sockets, time);
        if (!datagram) {
            co_return;
        }
        take(*datagram);
    }
}

Task<void> Lookup::listenOut()
{
    Listening time(heardOut);
    while (hearsOut && heard > 0) {
        time.end = heardOut;
        const std::optional<Datagram> datagram = co_await network.receive(sockets, time);
        if (!datagram) {
            co_return;
        }
        take(*datagram);
    }
}

void Lookup::take(const Datagram& datagram)
{
    if (datagram.bytes.size() < headerSize) {
        return;
    }
    const auto found = bySequence.find(decodeHeader(std::span(datagram.bytes).first<headerSize>()).sequenceId);
    if (found == bySequence.end()) {
        return;
    }
    Asked& one = *found->second;
    for (const Request& request : one.requests) {
        std::optional<Reply> reply = replyIn(datagram, request);
        if (reply && (reply->payload.empty() || isFrom(*reply, one.name))) {
            note(one, {std::move(*reply), datagram.address, datagram.interface});
            return;
        }
    }
}

void Lookup::note(Asked& one, CardReply answer)
{
    if (one.answers.size() == mostAnswers) {
        return;
    }
    one.answers.push_back(std::move(answer));
    remember(one, one.answers.back());
    if (one.answers.size() > 1) {
        return;
    }
    ++heard;
    heardOut = after(listening);
    one.isOver.set();
}

// The first answer need not be the one that a way leads to.
void Lookup::remember(Asked& one, const CardReply& answer)
{
    const std::optional<Endpoint> way = wayTo(answer);
    if (one.hasWay || (!way && one.answers.size() > 1)) {
        return;
    }
    one.hasWay = way.has_value();
    lastHeard.note(one.name, {way ? way->address : std::string(noAddress), secondsNow(), answer.interface});
    isNews = true;
}

void Lookup::save()
{
    if (isNews && !hearsOut) {
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
    remember(one, answer);
    save();
    co_return answer;
}

// The interface of a hearing that does not tell it, if there is no doubt.
std::string Lookup::interfaceOf(const LastHeard::Hearing& hearing) const
{
    std::string only = hearing.interface;
    for (const BroadcastSocket& socket : sockets) {
        if (hearing.interface.empty() && isInNetworkOf(socket.interface(), hearing.address)) {
            only = only.empty() ? socket.interface() : "";
        }
    }
    return only;
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
