// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"
#include "client/wire/BroadcastSocket.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Frame.h"
#include "client/wire/TcpConnection.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class Console;

// How patient exchanges are.
struct Patience {
    Seconds timeout{5};
    int retries = 2; // of requests that change nothing
};

// An answer to a broadcast: what it says and where it came from.
struct CardReply {
    Reply reply;
    std::string address;
    std::string interface;
};

// How a card is asked by its name.
struct ByName {
    // Tells by its text, or by where it came from, whether a reply with a payload is the one that is wanted.
    std::function<bool(const CardReply&)> isMine;
    std::string onlyInterface;        // empty: all; a card that hears two would do a change twice
    std::optional<Patience> patience; // nothing: the user's
    bool anyStatus = false;           // a refusal is an answer, too
};

// What a dry run keeps from being sent: what changes a card, or everything for commands that only read.
enum class DryRun { off, changes, everything };

// Thrown instead of sending a request in a dry run.
struct NotSent {
    Request request;
};

// Requests and their answers: what commands use of the wire. Nothing here waits in any other way than in the loop,
// and no socket outlives its exchange.
class Network
{
public:
    Network(EventLoop& newLoop, const Console& newConsole, Patience newPatience,
            std::vector<std::string> newInterfaces);

    // One TCP exchange on a connection of its own. Throws unless the card answers with success. A request that changes
    // nothing is repeated if the card closes the connection without an answer.
    Task<Reply> ask(Endpoint endpoint, Request request, std::string phase);
    // The same once only, and whatever the card's status is.
    Task<Reply> askOnce(Endpoint endpoint, Request request, std::string phase);

    // One exchange by broadcast. A request that changes nothing is repeated within the time. Throws unless the card
    // answers with success.
    Task<CardReply> askByName(std::string name, Request request, std::string phase, ByName how = {});

    Task<TcpConnection> connect(Endpoint endpoint);

    // One socket for each interface of the user's choice. Throws an unreachable Failure if there is none.
    [[nodiscard]] std::vector<BroadcastSocket> openInterfaces(const std::string& onlyInterface = {}) const;
    // Throws an unreachable Failure if no interface took it.
    void broadcast(const std::vector<BroadcastSocket>& sockets, const Request& request) const;
    // The next datagram that comes from a card's port, whole enough to have a header; nothing at the deadline.
    Task<std::optional<Datagram>> receive(const std::vector<BroadcastSocket>& sockets, TimePoint deadline);

    void setDryRun(DryRun mode) { dryRun = mode; }
    // Throws NotSent if the request is one that a dry run holds back.
    void holdBack(const Request& request) const;

    [[nodiscard]] EventLoop& eventLoop() const { return loop; }
    [[nodiscard]] const Patience& patience() const { return limits; }
    [[nodiscard]] TimePoint deadline() const { return after(limits.timeout); }

private:
    Task<std::optional<CardReply>> awaitReply(const std::vector<BroadcastSocket>& sockets, const Request& request,
                                              const std::string& phase, const ByName& how, TimePoint deadline);

    EventLoop& loop;
    const Console& console;
    Patience limits;
    std::vector<std::string> interfaces;
    DryRun dryRun = DryRun::off;
};

// The reply in a datagram, if it answers the request and is well formed; nothing otherwise.
[[nodiscard]] std::optional<Reply> replyIn(const Datagram& datagram, const Request& request);
