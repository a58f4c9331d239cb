// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/HostInterfaces.h"

#include "support/FakeInterface.h"
#include "support/SystemTest.h"

#include <cerrno>

namespace
{

// A machine with the loopback device, and one that can broadcast.
class HostInterfacesTest : public SystemTest
{
protected:
    FakeInterface lan{"lan0", "192.0.2.1", "255.255.255.0"};
};

TEST_F(HostInterfacesTest, TheLoopbackDeviceHasANetworkAndIsNoLink)
{
    EXPECT_TRUE(isInNetworkOf("lo", "127.0.0.1"));
    EXPECT_TRUE(isInNetworkOf("lo", "127.200.0.9"));
    EXPECT_FALSE(isOnLink("lo", "127.0.0.1"));
    EXPECT_FALSE(isOnLinkAnywhere("127.0.0.1"));
}

TEST_F(HostInterfacesTest, TheNetworkOfAnInterfaceIsThatOfItsAddressAndNetmask)
{
    for (const auto& isIn : {isInNetworkOf, isOnLink}) {
        EXPECT_TRUE(isIn("lan0", "192.0.2.1"));
        EXPECT_TRUE(isIn("lan0", "192.0.2.255"));
        EXPECT_FALSE(isIn("lan0", "192.0.3.1"));
        EXPECT_FALSE(isIn("lan0", "0.0.0.0"));
    }
    EXPECT_TRUE(isOnLinkAnywhere("192.0.2.7"));
    EXPECT_FALSE(isOnLinkAnywhere("192.0.3.7"));
}

TEST_F(HostInterfacesTest, AnAddressIsOnlyInTheNetworkOfTheInterfaceThatIsAskedFor)
{
    for (const auto& isIn : {isInNetworkOf, isOnLink}) {
        EXPECT_FALSE(isIn("lo", "192.0.2.7"));
        EXPECT_FALSE(isIn("lan0", "127.0.0.1"));
        EXPECT_FALSE(isIn("lan", "192.0.2.7"));
        EXPECT_FALSE(isIn("", "192.0.2.7"));
    }
}

TEST_F(HostInterfacesTest, AFurtherAddressBelongsToTheInterfaceThatItsLabelBeginsWith)
{
    const FakeInterface labelled("eth0:1", "198.51.100.1", "255.255.255.0");
    EXPECT_EQ(broadcastInterfaces(), Texts{"eth0"});
    EXPECT_TRUE(isInNetworkOf("eth0", "198.51.100.7"));
    EXPECT_TRUE(isOnLink("eth0", "198.51.100.7"));
}

TEST_F(HostInterfacesTest, BroadcastsLeaveTheLoopbackDeviceOut)
{
    EXPECT_EQ(broadcastInterfaces(), Texts{"lan0"});
}

TEST_F(HostInterfacesTest, AnInterfaceThatIsDownIsNoneOfThoseThatBroadcastsGoTo)
{
    EXPECT_EQ(interfacesThatAreDown(), Texts{});
    lan.isUp = false;
    EXPECT_EQ(interfacesThatAreDown(), Texts{"lan0"});
    EXPECT_EQ(broadcastInterfaces(), Texts{});
}

TEST_F(HostInterfacesTest, ThisMachinesAddressesAreThoseOfAllItsInterfaces)
{
    EXPECT_TRUE(isOwnAddress("127.0.0.1"));
    EXPECT_TRUE(isOwnAddress("192.0.2.1"));
    EXPECT_FALSE(isOwnAddress("192.0.2.2"));
}

TEST_F(HostInterfacesTest, AMachineThatDoesNotTellHasNone)
{
    failAlways("getifaddrs", ENOMEM);
    EXPECT_TRUE(broadcastInterfaces().empty());
    EXPECT_FALSE(isInNetworkOf("lan0", "192.0.2.7"));
    EXPECT_FALSE(isOwnAddress("192.0.2.1"));
}

} // namespace
