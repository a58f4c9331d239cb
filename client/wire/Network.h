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

inline constexpr std::string_view ourName = "tarvelctl"; // `From` of what we send, `To` of what comes back

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

    // One exchange by broadcast on all interfaces, or on one (never twice: a card that hears both would do a change
    // twice). `mine` tells by its text whether a reply with a payload is the wanted card's. A request that changes
    // nothing is repeated within the time. Throws unless the card answers with success.
    using IsMine = std::function<bool(const Reply&)>;
    Task<CardReply> askByName(std::string name, Request request, std::string phase, IsMine mine = {},
                              std::string onlyInterface = {});

    Task<TcpConnection> connect(Endpoint endpoint);

    // One socket for each interface of the user's choice. Throws an unreachable Failure if there is none.
    [[nodiscard]] std::vector<BroadcastSocket> openInterfaces(const std::string& onlyInterface = {}) const;
    // Throws an unreachable Failure if no interface took it.
    void broadcast(const std::vector<BroadcastSocket>& sockets, const Request& request) const;
    // The next datagram that comes from a card's port, whole enough to have a header; nothing at the deadline.
    Task<std::optional<Datagram>> receive(const std::vector<BroadcastSocket>& sockets, TimePoint deadline);

    [[nodiscard]] EventLoop& eventLoop() const { return loop; }
    [[nodiscard]] const Patience& patience() const { return limits; }
    [[nodiscard]] TimePoint deadline() const { return after(limits.timeout); }

private:
    Task<Reply> askOnce(Endpoint endpoint, Request request, std::string phase);
    Task<std::optional<CardReply>> awaitReply(const std::vector<BroadcastSocket>& sockets, const Request& request,
                                              const std::string& phase, const IsMine& mine, TimePoint deadline);

    EventLoop& loop;
    const Console& console;
    Patience limits;
    std::vector<std::string> interfaces;
};

// The reply in a datagram, if it answers the request and is well formed; nothing otherwise.
[[nodiscard]] std::optional<Reply> replyIn(const Datagram& datagram, const Request& request);
