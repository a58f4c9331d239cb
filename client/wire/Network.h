// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"
#include "client/wire/BroadcastSocket.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Frame.h"
#include "client/wire/Neighbour.h"
#include "client/wire/TcpConnection.h"
#include "client/wire/Wire.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// How long and how often a card is asked.
struct RetryPolicy {
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
    std::string onlyInterface;         // empty: all; a card that hears two would do a change twice
    std::optional<RetryPolicy> policy; // nothing: the user's
    bool anyStatus = false;            // a refusal is an answer, too
};

// How long is listened. What has come until the end is taken even if it is read late, as on a busy machine; but no more
// than may have waited, because somebody may send faster than it is read.
class Listening
{
public:
    explicit Listening(TimePoint newEnd) : end(newEnd) {}

    TimePoint end; // may be moved

    // Is one more datagram to be read from so many sockets?
    [[nodiscard]] bool takesOneMore(std::size_t sockets);
    // Which socket is looked at next: in turns, so that none hides the others.
    [[nodiscard]] std::size_t nextTurn() { return turn++; }

private:
    std::size_t turn = 0;
    std::size_t late = 0; // read after the end
};

// How the user wants cards to be reached.
struct NetworkOptions {
    RetryPolicy policy;
    std::vector<std::string> interfaces; // for broadcasts; none: all that can
    DryRun dryRun = DryRun::off;
    bool timeoutGiven = false; // by the user, who then means it for everything
    std::function<void(const std::string&)> warn = {};
};

// Which interfaces must take a broadcast: before a change all of them, because whoever is not asked may be meant.
enum class Reach { anyInterface, allInterfaces };

// Requests and their answers: what commands use of the wire. Nothing here waits in any other way than in the loop,
// and no socket outlives its exchange. What a dry run holds back throws NotSent before any card is contacted.
class Network
{
public:
    Network(EventLoop& newLoop, NetworkOptions newOptions, FrameObserver newObserver = {});
    Network(const Network&) = delete; // its connections point to its wire
    Network& operator=(const Network&) = delete;

    // Throws NotSent for what a dry run holds back: for a request that others go before, such as to find the card.
    void admit(const Request& request) const { wire.gate.admit(request); }

    // One TCP exchange on a connection of its own. Throws unless the card answers with success. A request that changes
    // nothing is repeated after a pause if the card closes the connection without an answer.
    Task<Reply> ask(Endpoint endpoint, Request request);
    // The same once only, and whatever the card's status is.
    Task<Reply> askOnce(Endpoint endpoint, Request request);
    // The same with one deadline for connecting and for the answer.
    Task<Reply> askUntil(TimePoint deadline, Endpoint endpoint, Request request);

    // One exchange by broadcast. A request that changes nothing is repeated within the time. Throws unless the card
    // answers with success.
    Task<CardReply> askByName(std::string name, Request request, ByName how = {});

    // One broadcast and the first answer of any card, whatever its status.
    Task<Reply> askAnybody(Request request);

    // For what is more than one exchange. As TcpConnection::open, within the user's time-out.
    Task<TcpConnection> connect(Endpoint endpoint, Request request);
    // As probePort, for at most that time.
    Task<PortState> probe(Endpoint endpoint, Seconds time);

    // Has a host in a network of this machine, beside the one at the others, this address?
    Task<Neighbour> seekNeighbour(std::string address, std::vector<std::string> besides, Seconds time);

    // One socket for each interface of the user's choice. Throws an unreachable Failure if there is none, and an
    // internal one if this machine gives no socket.
    [[nodiscard]] std::vector<BroadcastSocket> openInterfaces(const std::string& onlyInterface = {}) const;
    // Throws an unreachable Failure if no interface took it, or one that must did not; of others it warns once, and
    // returns that Failure: whoever is there was not asked.
    std::optional<Failure> broadcast(const std::vector<BroadcastSocket>& sockets, const Request& request,
                                     Reach reach = Reach::anyInterface);
    // An interface that is left out because it is down, although the user named none: as above.
    [[nodiscard]] std::optional<Failure> leftOut() const;
    // The next datagram; nothing at the end. Others are served between two of them.
    Task<std::optional<Datagram>> receive(const std::vector<BroadcastSocket>& sockets, Listening& listening);

    [[nodiscard]] EventLoop& eventLoop() const { return wire.loop; }
    [[nodiscard]] const RetryPolicy& retryPolicy() const { return options.policy; }
    // For a step that is known to take longer than others.
    [[nodiscard]] Seconds timeoutOr(Seconds longer) const
    {
        return options.timeoutGiven ? options.policy.timeout : longer;
    }
    // Did the user say on which interfaces to broadcast?
    [[nodiscard]] bool isToldInterfaces() const { return !options.interfaces.empty(); }
    // What was lost by sockets that are closed by now, because more came than they held.
    [[nodiscard]] const LostDatagrams& lost() const { return *wire.lost; }
    // May something be sent for its own sake? Not in a dry run.
    [[nodiscard]] bool admitsProbes() const { return wire.gate.admitsProbes(); }
    // When a step that begins now must have ended.
    [[nodiscard]] TimePoint deadline() const { return after(options.policy.timeout); }

private:
    [[nodiscard]] std::vector<BroadcastSocket> openAll() const;
    static Task<Reply> exchange(TcpConnection connection, TimePoint deadline);
    Task<std::optional<CardReply>> awaitReply(const std::vector<BroadcastSocket>& sockets, const Request& request,
                                              const ByName& how, TimePoint deadline);

    NetworkOptions options;
    Wire wire;
    std::set<std::string> deaf; // interfaces that were warned of
};

// The reply in a datagram, if it answers the request and is well formed; nothing otherwise, since anybody may
// send to this port.
[[nodiscard]] std::optional<Reply> replyIn(const Datagram& datagram, const Request& request);
