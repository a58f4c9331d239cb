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
    EXPECT_TRUE(HostInterfaces().isInNetworkOf("lo", "127.0.0.1"));
    EXPECT_TRUE(HostInterfaces().isInNetworkOf("lo", "127.200.0.9"));
    EXPECT_FALSE(HostInterfaces().isOnLink("lo", "127.0.0.1"));
    EXPECT_FALSE(HostInterfaces().isOnLinkAnywhere("127.0.0.1"));
}

TEST_F(HostInterfacesTest, TheNetworkOfAnInterfaceIsThatOfItsAddressAndNetmask)
{
    const HostInterfaces here;
    for (const auto isIn : {&HostInterfaces::isInNetworkOf, &HostInterfaces::isOnLink}) {
        EXPECT_TRUE((here.*isIn)("lan0", "192.0.2.1"));
        EXPECT_TRUE((here.*isIn)("lan0", "192.0.2.255"));
        EXPECT_FALSE((here.*isIn)("lan0", "192.0.3.1"));
        EXPECT_FALSE((here.*isIn)("lan0", "0.0.0.0"));
    }
    EXPECT_TRUE(HostInterfaces().isOnLinkAnywhere("192.0.2.7"));
    EXPECT_FALSE(HostInterfaces().isOnLinkAnywhere("192.0.3.7"));
}

TEST_F(HostInterfacesTest, AnAddressIsOnlyInTheNetworkOfTheInterfaceThatIsAskedFor)
{
    const HostInterfaces here;
    for (const auto isIn : {&HostInterfaces::isInNetworkOf, &HostInterfaces::isOnLink}) {
        EXPECT_FALSE((here.*isIn)("lo", "192.0.2.7"));
        EXPECT_FALSE((here.*isIn)("lan0", "127.0.0.1"));
        EXPECT_FALSE((here.*isIn)("lan", "192.0.2.7"));
        EXPECT_FALSE((here.*isIn)("", "192.0.2.7"));
    }
}

TEST_F(HostInterfacesTest, AFurtherAddressBelongsToTheInterfaceThatItsLabelBeginsWith)
{
    const FakeInterface labelled("eth0:1", "198.51.100.1", "255.255.255.0");
    EXPECT_EQ(HostInterfaces().thatBroadcast(), Texts{"eth0"});
    EXPECT_TRUE(HostInterfaces().isInNetworkOf("eth0", "198.51.100.7"));
    EXPECT_TRUE(HostInterfaces().isOnLink("eth0", "198.51.100.7"));
}

TEST_F(HostInterfacesTest, BroadcastsLeaveTheLoopbackDeviceOut)
{
    EXPECT_EQ(HostInterfaces().thatBroadcast(), Texts{"lan0"});
}

TEST_F(HostInterfacesTest, AnInterfaceThatIsDownIsNoneOfThoseThatBroadcastsGoTo)
{
    EXPECT_EQ(HostInterfaces().thatAreDown(), Texts{});
    lan.isUp = false;
    EXPECT_EQ(HostInterfaces().thatAreDown(), Texts{"lan0"});
    EXPECT_EQ(HostInterfaces().thatBroadcast(), Texts{});
}

TEST_F(HostInterfacesTest, ThisMachinesAddressesAreThoseOfAllItsInterfaces)
{
    EXPECT_TRUE(HostInterfaces().isOwnAddress("127.0.0.1"));
    EXPECT_TRUE(HostInterfaces().isOwnAddress("192.0.2.1"));
    EXPECT_FALSE(HostInterfaces().isOwnAddress("192.0.2.2"));
}

TEST_F(HostInterfacesTest, AMachineThatDoesNotTellHasNone)
{
    failAlways("getifaddrs", ENOMEM);
    EXPECT_TRUE(HostInterfaces().thatBroadcast().empty());
    EXPECT_FALSE(HostInterfaces().isInNetworkOf("lan0", "192.0.2.7"));
    EXPECT_FALSE(HostInterfaces().isOwnAddress("192.0.2.1"));
}

} // namespace
