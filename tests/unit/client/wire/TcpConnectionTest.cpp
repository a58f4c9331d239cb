// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/TcpConnection.h"

#include "client/engine/Parallel.h"
#include "unit/client/FailureOf.h"
#include "unit/client/wire/LoopbackListener.h"

#include <gtest/gtest.h>
#include <optional>

namespace
{

const TimePoint never = TimePoint::max();
const TimePoint past;

Bytes replyTo(const Request& request, const std::string& text)
{
    Request reply = textRequest(CommandId::versions, text);
    reply.header.sequenceId = request.header.sequenceId;
    reply.header.commandId |= replyFlag;
    reply.header.status = static_cast<std::uint8_t>(Status::success);
    return encode(reply);
}

class TcpConnectionTest : public testing::Test
{
protected:
    TcpConnection open() { return loop.run(TcpConnection::open(wire, card.endpoint(), request, never)); }

    void say(std::span<const std::byte> bytes) const
    {
        ASSERT_EQ(::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

    // The peer's end of a connection that is lost, not closed.
    void loseConnection()
    {
        const linger atOnce = {.l_onoff = 1, .l_linger = 0};
        ::setsockopt(peer.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        peer.reset();
    }

    // What the wait for a reply ended with; nothing if one came.
    Category endOf(Task<Reply> work)
    {
        return failureOf([&] { loop.run(std::move(work)); }).category;
    }

    LoopbackListener card;
    Request request = bareRequest(CommandId::versions);
    Bytes reply = replyTo(request, "<Versions/>");
    EventLoop loop;
    std::vector<std::pair<Direction, Bytes>> shown;
    Wire wire{loop, SendGate(),
              [this](const std::string& address, Direction direction, std::span<const std::byte> bytes) {
                  EXPECT_EQ(address, "127.0.0.1");
                  shown.emplace_back(direction, Bytes(bytes.begin(), bytes.end()));
              }};
    Descriptor peer;
};

TEST_F(TcpConnectionTest, SendsTheRequestAsOnePiece)
{
    TcpConnection connection = open();
    peer = card.accept();
    EXPECT_TRUE(loop.run(connection.sendRequest(never)));
    Bytes heard(100);
    heard.resize(static_cast<std::size_t>(::recv(peer.get(), heard.data(), heard.size(), 0)));
    EXPECT_EQ(heard, encode(request));
}

TEST_F(TcpConnectionTest, PutsTheReplyTogether)
{
    TcpConnection connection = open();
    peer = card.accept();
    std::optional<Reply> received;
    const auto receive = [&]() -> Task<void> { received = co_await connection.receiveReply(never); };
    const auto speak = [&]() -> Task<void> {
        for (const std::byte& one : reply) {
            say(std::span(&one, 1));
            co_await loop.until(Clock::now());
        }
    };
    loop.run(inParallel(loop, 2, 2, [&](std::size_t index) { return index == 0 ? receive() : speak(); }));
    ASSERT_TRUE(received);
    EXPECT_EQ(textOf(*received), "<Versions/>");
}

TEST_F(TcpConnectionTest, ShowsWhatIsSentAndReceived)
{
    TcpConnection connection = open();
    peer = card.accept();
    loop.run(connection.sendRequest(never));
    say(reply);
    loop.run(connection.receiveReply(never));
    const std::vector<std::pair<Direction, Bytes>> expected = {{Direction::sent, encode(request)},
                                                               {Direction::received, reply}};
    EXPECT_EQ(shown, expected);
}

TEST_F(TcpConnectionTest, ShowsTheHeaderThatIsNoReply)
{
    TcpConnection connection = open();
    peer = card.accept();
    reply.front() = std::byte{0};
    say(reply);
    EXPECT_EQ(endOf(connection.receiveReply(never)), Category::garbage);
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown.front().second, Bytes(reply.begin(), reply.begin() + headerSize));
}

TEST_F(TcpConnectionTest, TellsSilence)
{
    TcpConnection connection = open();
    peer = card.accept();
    EXPECT_EQ(endOf(connection.receiveReply(past)), Category::timeout);
}

TEST_F(TcpConnectionTest, TellsACardThatClosedInsteadOfAnswering)
{
    TcpConnection connection = open();
    peer = card.accept();
    say(std::span(reply).first(headerSize));
    peer.reset();
    EXPECT_EQ(endOf(connection.receiveReply(never)), Category::closed);
}

TEST_F(TcpConnectionTest, TellsALostConnectionWhileItSends)
{
    TcpConnection connection = open();
    peer = card.accept();
    loseConnection();
    EXPECT_FALSE(loop.run(connection.sendRequest(never)));
}

TEST_F(TcpConnectionTest, TellsARefusal)
{
    card.close();
    const Failure failure = failureOf([&] { open(); });
    EXPECT_EQ(failure.code, ExitCode::unreachable);
    EXPECT_EQ(failure.category, Category::refused);
    EXPECT_EQ(failure.phase, "connecting");
}

TEST_F(TcpConnectionTest, StreamsNoMoreThanTheRequestAnnounced)
{
    request.streamed = 5;
    TcpConnection connection = open();
    loop.run(connection.sendRequest(never));
    const Bytes bytes(6);
    EXPECT_THROW((void)connection.sendSome(bytes), std::logic_error);
    EXPECT_EQ(connection.sendSome(std::span(bytes).first(3)), 3);
    EXPECT_THROW((void)connection.sendSome(std::span(bytes).first(3)), std::logic_error);
    EXPECT_EQ(connection.sendSome(std::span(bytes).first(2)), 2);
}

TEST_F(TcpConnectionTest, ProbesWhetherAnybodyListens)
{
    EXPECT_EQ(loop.run(probePort(wire, card.endpoint(), never)), PortState::open);
    const Endpoint endpoint = card.endpoint();
    card.close();
    EXPECT_EQ(loop.run(probePort(wire, endpoint, never)), PortState::closed);
    EXPECT_TRUE(shown.empty());
}

} // namespace
