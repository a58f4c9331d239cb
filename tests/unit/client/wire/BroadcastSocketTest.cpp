// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/BroadcastSocket.h"

#include "client/wire/Endpoint.h"
#include "support/PortMapping.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

namespace
{

std::uint16_t portOf(int descriptor)
{
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size);
    return ntohs(own.sin_port);
}

// A card's side: a socket on the loopback device that stands for the port of all cards.
class BroadcastSocketTest : public testing::Test
{
protected:
    BroadcastSocketTest() : card(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        const sockaddr_in address = socketAddress({"127.0.0.1", 0});
        ::bind(card.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
        mapping.emplace(cardPort, portOf(card.get()));
    }

    void answer(const Bytes& bytes) const
    {
        const sockaddr_in client = socketAddress({"127.0.0.1", portOf(socket.descriptor())});
        ::sendto(card.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&client), sizeof client);
    }

    Descriptor card;
    std::optional<PortMapping> mapping;
    EventLoop loop;
    std::vector<std::pair<std::string, Direction>> shown;
    Wire wire{loop, SendGate(), [this](const std::string& peer, Direction direction, std::span<const std::byte>) {
                  shown.emplace_back(peer, direction);
              }};
    BroadcastSocket socket{wire, "lo"};
};

TEST_F(BroadcastSocketTest, SendsTheWholeRequestToThePortOfTheCards)
{
    const Request request = bareRequest(CommandId::ipConfigGet);
    ASSERT_TRUE(socket.broadcast(request));
    Bytes heard(100);
    heard.resize(static_cast<std::size_t>(::recv(card.get(), heard.data(), heard.size(), 0)));
    EXPECT_EQ(heard, encode(request));
}

TEST_F(BroadcastSocketTest, TellsWhereADatagramCameFrom)
{
    answer(Bytes(3, std::byte{7}));
    const std::optional<Datagram> datagram = socket.receive();
    ASSERT_TRUE(datagram);
    EXPECT_EQ(datagram->bytes, Bytes(3, std::byte{7}));
    EXPECT_EQ(datagram->address, "127.0.0.1");
    EXPECT_EQ(datagram->port, cardPort);
    EXPECT_EQ(datagram->interface, "lo");
}

TEST_F(BroadcastSocketTest, HasNothingBeforeSomethingCame)
{
    EXPECT_FALSE(socket.receive());
}

TEST_F(BroadcastSocketTest, ShowsEachDatagramWithItsInterfaceOrSender)
{
    ASSERT_TRUE(socket.broadcast(bareRequest(CommandId::ipConfigGet)));
    answer(Bytes(1));
    ASSERT_TRUE(socket.receive());
    const std::vector<std::pair<std::string, Direction>> expected = {{"lo", Direction::sent},
                                                                     {"127.0.0.1", Direction::received}};
    EXPECT_EQ(shown, expected);
}

TEST_F(BroadcastSocketTest, IsNotOnThePortOfTheCards)
{
    EXPECT_NE(portOf(socket.descriptor()), cardPort);
}

} // namespace
