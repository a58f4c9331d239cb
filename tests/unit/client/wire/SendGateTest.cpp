// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/SendGate.h"

#include "client/wire/Network.h"
#include "support/ProtocolPage.h"
#include "unit/client/wire/LoopbackListener.h"

#include <gtest/gtest.h>

namespace
{

// Every command number that there can be, so that one which is given a meaning tomorrow is among them.
std::vector<std::uint16_t> commandsThat(DryRun mode)
{
    const SendGate gate(mode);
    std::vector<std::uint16_t> admitted;
    for (unsigned number = 0; number <= UINT16_MAX; ++number) {
        try {
            gate.admit(bareRequest(static_cast<CommandId>(number)));
            admitted.push_back(static_cast<std::uint16_t>(number));
        } catch (const NotSent& held) {
            EXPECT_EQ(held.request.header.commandId, number);
        }
    }
    return admitted;
}

TEST(SendGateTest, AdmitsInADryRunThatChangesOnlyWhatReads)
{
    std::vector<std::uint16_t> reading;
    for (const DescribedCommand& command : describedCommands()) {
        if (command.effect == "reads") {
            reading.push_back(command.number);
        }
    }
    ASSERT_FALSE(reading.empty());
    EXPECT_EQ(commandsThat(DryRun::changes), reading);
}

TEST(SendGateTest, AdmitsNothingInADryRunThatReads)
{
    EXPECT_TRUE(commandsThat(DryRun::everything).empty());
}

TEST(SendGateTest, AdmitsEverythingElsewhere)
{
    EXPECT_EQ(commandsThat(DryRun::off).size(), 65536U);
}

// A card that nobody has told of a command which the client will have one day.
class DryRunTest : public testing::Test
{
protected:
    LoopbackListener listener;
    Endpoint card = listener.endpoint();
    Request newCommand = bareRequest(static_cast<CommandId>(0x7FFF));
    EventLoop loop;
    int framesSeen = 0;
    Network network{loop,
                    {{Seconds(1), 0}, {"lo"}, DryRun::changes},
                    [this](const std::string&, Direction, std::span<const std::byte>) { ++framesSeen; }};
};

TEST_F(DryRunTest, OpensNoConnectionToAskANewCommand)
{
    EXPECT_THROW(loop.run(network.ask(card, newCommand)), NotSent);
    EXPECT_THROW(loop.run(network.askOnce(card, newCommand)), NotSent);
    EXPECT_THROW(loop.run(network.askUntil(after(Seconds(1)), card, newCommand)), NotSent);
    EXPECT_FALSE(listener.wasContacted());
}

TEST_F(DryRunTest, OpensNoConnectionForANewCommandOfMyOwn)
{
    EXPECT_THROW(loop.run(network.connect(card, newCommand)), NotSent);
    EXPECT_FALSE(listener.wasContacted());
}

TEST_F(DryRunTest, ProbesNoPort)
{
    EXPECT_EQ(loop.run(network.probe(card, Seconds(1))), PortState::silent);
    EXPECT_FALSE(listener.wasContacted());
}

TEST_F(DryRunTest, BroadcastsNoNewCommand)
{
    EXPECT_THROW(network.broadcast(network.openInterfaces(), newCommand), NotSent);
    EXPECT_THROW(loop.run(network.askByName("card", newCommand)), NotSent);
    EXPECT_THROW(loop.run(network.askAnybody(newCommand)), NotSent);
    EXPECT_EQ(framesSeen, 0);
}

TEST_F(DryRunTest, LetsNothingFollowAnAdmittedRequest)
{
    TcpConnection connection = loop.run(network.connect(card, bareRequest(CommandId::versions)));
    const Bytes smuggled = encode(newCommand);
    EXPECT_THROW((void)connection.sendSome(smuggled), std::logic_error);
    EXPECT_TRUE(loop.run(connection.sendRequest(after(Seconds(1)))));
    EXPECT_THROW((void)connection.sendSome(smuggled), std::logic_error);
    EXPECT_EQ(framesSeen, 1);
}

TEST_F(DryRunTest, StillContactsACardForWhatReads)
{
    loop.run(network.connect(card, bareRequest(CommandId::timeReferenceGet)));
    EXPECT_TRUE(listener.wasContacted());
}

TEST_F(DryRunTest, ReallyContactsACardWhenItIsNone)
{
    Network real(loop, {{Seconds(1), 0}, {}, DryRun::off});
    loop.run(real.connect(card, newCommand));
    EXPECT_TRUE(listener.wasContacted());
    EXPECT_EQ(loop.run(real.probe(card, Seconds(1))), PortState::open);
}

} // namespace
