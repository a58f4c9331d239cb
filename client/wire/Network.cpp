// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Network.h"

Network::Network(EventLoop& newLoop, NetworkOptions newOptions, FrameObserver newObserver)
    : options(std::move(newOptions)), wire{newLoop, SendGate(options.dryRun), std::move(newObserver)}
{
}

Task<TcpConnection> Network::connect(Endpoint endpoint, Request request)
{
    return TcpConnection::open(wire, std::move(endpoint), std::move(request), deadline());
}

Task<PortState> Network::probe(Endpoint endpoint, Seconds time)
{
    return probePort(wire, std::move(endpoint), after(time));
}

Task<Neighbour> Network::seekNeighbour(std::string address, std::vector<std::string> besides, Seconds time)
{
    return ::seekNeighbour(wire, std::move(address), std::move(besides), time);
}

Task<Reply> Network::exchange(TcpConnection connection, TimePoint deadline)
{
    co_await connection.sendRequest(deadline); // whatever becomes of it: a card that refuses early has answered
    Reply reply = co_await connection.receiveReply(deadline);
    co_return reply;
}

Task<Reply> Network::askOnce(Endpoint endpoint, Request request)
{
    TcpConnection connection = co_await connect(std::move(endpoint), std::move(request));
    Reply reply = co_await exchange(std::move(connection), deadline());
    co_return reply;
}

Task<Reply> Network::askUntil(TimePoint deadline, Endpoint endpoint, Request request)
{
    TcpConnection connection = co_await TcpConnection::open(wire, std::move(endpoint), std::move(request), deadline);
    Reply reply = co_await exchange(std::move(connection), deadline);
    co_return reply;
}

Task<Reply> Network::ask(Endpoint endpoint, Request request)
{
    constexpr Seconds pause(0.3); // chosen: a card that closes a connection has a reason, which may pass
    for (int left = changesNothing(request) ? options.policy.retries : 0;; --left) {
        try {
            Reply reply = co_await askOnce(endpoint, request);
            checkStatus(reply.header);
            co_return reply;
        } catch (const Failure& failure) {
            // A time-out is not tried again: the request waits in the card, which would only have one more to serve.
            if (failure.category != Category::closed || left <= 0) {
                throw;
            }
        }
        co_await wire.loop.until(after(pause));
    }
}
