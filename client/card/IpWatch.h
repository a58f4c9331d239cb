// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Queries.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/wire/Network.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// Asks a card for its IP configuration again and again, on all interfaces at once, and hears every answer to any of
// the questions. Each has a sequence number of its own, so that what a slow card answers late still counts, and for the
// question that it answers. The next one is asked when the last one was answered, or with growing pauses, so that
// questions do not pile up before a slow card. Lives as long as its task.
class IpWatch
{
public:
    // The number of the question, from 1, and the answer; nothing if the card refused to tell. True ends the watch.
    using Hear = std::function<bool(int question, const std::optional<CardIp>& answer)>;

    IpWatch(Network& newNetwork, std::string newCard, Seconds newPause);

    // Throws if no interface can be opened.
    Task<void> run(Hear hear, TimePoint deadline);

private:
    void ask();
    Task<bool> listen(const Hear& hear, TimePoint deadline);
    [[nodiscard]] bool judge(const Datagram& datagram, const Hear& hear);

    Network& network;
    std::string card;
    Seconds pause; // between an answer and the next question
    std::vector<BroadcastSocket> sockets;
    std::vector<Request> questions;
    Seconds patience; // with the last question
    TimePoint nextQuestion;
};

// Collects the interfaces on which the card of that name answers from this address. It is asked until it has had its
// turn over each of them.
Task<void> findHearers(Network& network, std::string card, std::string address, std::vector<std::string>& interfaces);
