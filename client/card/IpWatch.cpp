// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpWatch.h"

#include "client/card/Identity.h"
#include "client/card/IpEvidence.h"
#include "client/model/Contains.h"

#include <algorithm>

namespace
{

// Chosen, not measured: a datagram is lost while a card's network restarts, which takes a second or two; a slow card
// takes as long to read its settings.
constexpr Seconds firstPatience{1};
constexpr Seconds longestPatience{8};
constexpr double growth = 1.5;

// Nothing if it makes no sense: a network that restarts gives that.
std::optional<CardIp> readable(const CardReply& reply)
{
    try {
        return CardIp{ipConfigurationIn(reply), reply.address, reply.interface};
    } catch (const Failure&) {
        return std::nullopt;
    }
}

} // namespace

IpWatch::IpWatch(Network& newNetwork, std::string newCard, Seconds newPause)
    : network(newNetwork), card(std::move(newCard)), pause(newPause), patience(firstPatience)
{
}

Task<void> IpWatch::run(Hear hear, TimePoint deadline)
{
    sockets = network.openInterfaces();
    bool ended = false;
    while (!ended && Clock::now() < deadline) {
        ask();
        ended = co_await listen(hear, deadline);
    }
}

void IpWatch::ask()
{
    questions.push_back(textRequest(CommandId::ipConfigGet, ipConfigGetXml(card)));
    try {
        network.broadcast(sockets, questions.back());
    } catch (const Failure&) { // the next question may go out again
    }
    nextQuestion = after(patience);
    patience = std::min(longestPatience, patience * growth);
}

// Until the next question is due.
Task<bool> IpWatch::listen(const Hear& hear, TimePoint deadline)
{
    Listening listening(nextQuestion);
    for (;;) {
        listening.end = std::min(deadline, nextQuestion);
        const std::optional<Datagram> datagram = co_await network.receive(sockets, listening);
        if (!datagram) {
            co_return false;
        }
        if (judge(*datagram, hear)) {
            co_return true;
        }
    }
}

bool IpWatch::judge(const Datagram& datagram, const Hear& hear)
{
    for (std::size_t index = questions.size(); index > 0; --index) {
        std::optional<Reply> reply = replyIn(datagram, questions[index - 1]);
        if (!reply) {
            continue;
        }
        const bool refused = reply->header.status == static_cast<std::uint8_t>(Status::failure);
        const std::optional<CardIp> answer = readable({std::move(*reply), datagram.address, datagram.interface});
        // A refusal names nobody, but no card refuses what is for another.
        if (!refused && (!answer || answer->configuration.from != card)) {
            return false;
        }
        // Only the latest: whoever answers an earlier one has those behind it before it still.
        if (index == questions.size()) {
            nextQuestion = std::min(nextQuestion, after(pause));
        }
        return hear(static_cast<int>(index), answer);
    }
    return false;
}

Task<void> findHearers(Network& network, std::string card, std::string address, std::vector<std::string>& interfaces)
{
    IpWatch watch(network, std::move(card), Seconds(0));
    const auto hear = [&](int question, const std::optional<CardIp>& answer) {
        if (answer && answer->address == address && !contains(interfaces, answer->interface)) {
            interfaces.push_back(answer->interface);
        }
        return question >= enoughQuestions;
    };
    co_await watch.run(hear, network.deadline());
}
