// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Neighbour.h"

#include "support/ErrorText.h"
#include "support/FakeInterface.h"
#include "support/SystemTest.h"

#include <cerrno>

namespace
{

// In a network that the kernel knows nothing of, so that it asks nobody. What it finds out where it does ask, only a
// network shows.
class NeighbourTest : public SystemTest
{
protected:
    Neighbour seek() { return loop.run(seekNeighbour(wire, "192.0.2.7", {}, Seconds(0))); }

    FakeInterface lan{"lan0", "192.0.2.1", "255.255.255.0"};
    EventLoop loop;
    Wire wire{loop, SendGate(), {}};
};

TEST_F(NeighbourTest, IsUnknownIfNobodyWasAsked)
{
    const Neighbour found = seek();
    EXPECT_EQ(found.state, Neighbour::State::unknown);
    EXPECT_NE(found.why, "");
    EXPECT_EQ(callsTo("sendto"), Texts{"0 192.0.2.7:9"});
}

TEST_F(NeighbourTest, IsUnknownIfNothingCouldBeSent)
{
    failNext("sendto", EPERM);
    const Neighbour found = seek();
    EXPECT_EQ(found.state, Neighbour::State::unknown);
    EXPECT_EQ(found.why, errorText("nothing could be sent to it: ", EPERM));
}

TEST_F(NeighbourTest, IsUnknownIfTheTableCannotBeRead)
{
    passNext("socket");
    failNext("socket", EMFILE);
    const Neighbour found = seek();
    EXPECT_EQ(found.state, Neighbour::State::unknown);
    EXPECT_EQ(found.why, errorText("this machine's table of neighbours cannot be read: ", EMFILE));
}

TEST_F(NeighbourTest, IsUnknownElsewhere)
{
    EXPECT_EQ(loop.run(seekNeighbour(wire, "198.51.100.7", {}, Seconds(0))).state, Neighbour::State::unknown);
    EXPECT_TRUE(callsTo("sendto").empty());
}

} // namespace
