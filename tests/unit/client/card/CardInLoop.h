// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Parallel.h"
#include "client/wire/Frame.h"
#include "unit/client/FailureOf.h"
#include "unit/client/wire/LoopbackListener.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

// A card that works in the client's own loop, so that a test decides what each of them does before the other goes on.
class CardInLoop
{
public:
    explicit CardInLoop(EventLoop& newLoop) : loop(newLoop) {}

    // The work of the client beside that of the card; the failure that ended it, if one did.
    Failure beside(Task<void> cards, Task<void> work)
    {
        std::array both = {std::move(cards), std::move(work)};
        const auto one = [&](std::size_t index) { return std::move(both.at(index)); };
        return failureOf([&] { loop.run(inParallel(loop, 2, 2, one)); });
    }

    Task<void> accept()
    {
        co_await loop.readable(listener.descriptor(), TimePoint::max());
        peer = listener.accept();
        came.clear();
        ++served;
    }

    // So many more bytes of the connection, or all until the client hangs up.
    Task<void> take(std::size_t size)
    {
        std::array<std::byte, 65536> piece = {};
        while (size > 0) {
            co_await loop.readable(peer.get(), TimePoint::max());
            const ssize_t got = ::recv(peer.get(), piece.data(), std::min(size, piece.size()), MSG_DONTWAIT);
            if (got <= 0) {
                co_return;
            }
            came.insert(came.end(), piece.begin(), piece.begin() + got);
            size -= static_cast<std::size_t>(got);
        }
    }

    // One request, whole.
    Task<void> takeRequest()
    {
        co_await accept();
        co_await take(headerSize);
        if (came.size() == headerSize) {
            co_await take(header().payloadLength);
        }
    }

    void answer(Status status, const std::string& text = {}) const
    {
        const auto command = static_cast<CommandId>(header().commandId);
        Request reply = text.empty() ? bareRequest(command) : textRequest(command, text);
        reply.header.commandId |= replyFlag;
        reply.header.status = static_cast<std::uint8_t>(status);
        reply.header.sequenceId = header().sequenceId;
        const Bytes bytes = encode(reply);
        EXPECT_EQ(::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

    void hangUp() { peer.reset(); }

    // Answers each connection with one of the texts; closes without a word for an empty one.
    Task<void> serve(std::vector<std::string> texts, Status status = Status::success)
    {
        for (const std::string& text : texts) {
            co_await takeRequest();
            if (!text.empty()) {
                answer(status, text);
            }
            hangUp();
        }
    }

    EventLoop& loop;
    LoopbackListener listener;
    const Endpoint endpoint = listener.endpoint();
    Bytes came; // over the last connection
    int served = 0;

private:
    [[nodiscard]] MessageHeader header() const { return decodeHeader(std::span(came).first<headerSize>()); }

    Descriptor peer;
};
