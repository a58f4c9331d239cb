// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// How names are asked for, and who answers.
#include "client/card/Identity.h"
#include "client/card/Lookup.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace
{

// A card reads about 330 requests of a burst of a thousand: its socket's buffer holds no more while it answers. Fifty
// leave room for what others ask.
constexpr std::size_t mostInBurst = 50;
constexpr Seconds burstTime{0.1};

// Of one name: two are one too many already, and who floods shall not fill this machine's memory.
constexpr std::size_t mostAnswers = 100;

} // namespace

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
    one.questions.push_back({std::move(request), Clock::now()});
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
    latestLook = {};
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
    listening.endAsking(Clock::now());
    Listening time(listening.end());
    while (hearsOut && heard > 0) {
        time.end = listening.end();
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
    for (const Question& question : one.questions) {
        std::optional<Reply> reply = replyIn(datagram, question.request);
        if (reply && (reply->payload.empty() || isFrom(*reply, one.name))) {
            note(one, question.asked, {std::move(*reply), datagram.address, datagram.interface});
            return;
        }
    }
}

void Lookup::note(Asked& one, TimePoint since, CardReply answer)
{
    const TimePoint now = Clock::now();
    one.isSlow = one.isSlow || now - since > HearingOut::moment / 2; // a probe is listened to for that moment
    if (one.answers.size() == mostAnswers) {
        return;
    }
    one.answers.push_back(std::move(answer));
    remember(one, one.answers.back());
    if (one.answers.size() > 1) {
        return;
    }
    ++heard;
    listening.hear(since, now);
    one.isOver.set();
}
