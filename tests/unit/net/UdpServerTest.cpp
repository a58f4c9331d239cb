// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/UdpServer.h"

#include "net/SetupError.h"
#include "support/ErrorText.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"

#include <cerrno>

#include <netinet/in.h>

namespace
{

using UdpServerTest = SystemTest;

// Lets the next server bind to a device that this machine does not have.
void pretendDevice()
{
    passNext("setsockopt");
    returnNext("setsockopt", 0);
}

std::string created(const UdpServer& server)
{
    return "Datagram socket (" + std::to_string(server.descriptor()) + ") successfully created";
}

TEST_F(UdpServerTest, EachStepIsLogged)
{
    pretendDevice();
    const UdpServer server(0, "eth0");
    EXPECT_EQ(log.lines(), (Lines{{6, created(server)},
                                  {6, "Server socket options successfully set"},
                                  {6, "Bind() was successful"},
                                  {6, "BindToDevice (eth0) was successful"}}));
}

TEST_F(UdpServerTest, TheStepsAreTakenInOrder)
{
    pretendDevice();
    const UdpServer server(0, "eth0");
    EXPECT_EQ(orderOf({"socket", "setsockopt", "bind", "listen"}),
              (Texts{"socket: SOCK_DGRAM|SOCK_CLOEXEC", "setsockopt: SO_REUSEADDR 1", "bind: 0.0.0.0:0",
                     "setsockopt: SO_BINDTODEVICE eth0"}));
}

TEST_F(UdpServerTest, AnEmptyDeviceNameEndsTheSetUpAfterTheBind)
{
    const UdpServer server(0, "");
    EXPECT_EQ(log.texts(), (Texts{created(server), "Server socket options successfully set", "Bind() was successful"}));
    EXPECT_EQ(callsTo("setsockopt"), Texts{"SO_REUSEADDR 1"});
}

TEST_F(UdpServerTest, ThePortIsBoundOnAllAddresses)
{
    returnNext("bind", 0);
    const UdpServer server(50003, "");
    EXPECT_EQ(callsTo("bind"), Texts{"0.0.0.0:50003"});
}

TEST_F(UdpServerTest, TheBoundAddressIsRemembered)
{
    returnNext("bind", 0);
    const UdpServer server(50003, "");
    EXPECT_EQ(server.boundAddress().sin_family, AF_INET);
    EXPECT_EQ(server.boundAddress().sin_port, htons(50003));
    EXPECT_EQ(server.boundAddress().sin_addr.s_addr, htonl(INADDR_ANY));
}

TEST_F(UdpServerTest, TwoServersShareAPortEachOnItsOwnDevice)
{
    pretendDevice();
    const UdpServer first(0, "eth0");
    const std::uint16_t port = boundPort(first.descriptor());
    pretendDevice();
    const UdpServer second(port, "eth1");
    EXPECT_EQ(boundPort(second.descriptor()), port);
    EXPECT_TRUE(log.warnings().empty());
}

TEST_F(UdpServerTest, BroadcastIsLeftToTheService)
{
    const UdpServer server(0, "");
    int value = -1;
    socklen_t length = sizeof value;
    getsockopt(server.descriptor(), SOL_SOCKET, SO_BROADCAST, &value, &length);
    EXPECT_EQ(value, 0);
}

TEST_F(UdpServerTest, ASocketThatCannotBeCreatedIsAWarningAndTheEnd)
{
    failNext("socket", ENFILE);
    EXPECT_THROW(UdpServer(0, ""), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("Creating datagram socket failed: ", ENFILE)});
}

TEST_F(UdpServerTest, AnOptionThatCannotBeSetIsAWarningAndTheEnd)
{
    failNext("setsockopt", ENOPROTOOPT);
    EXPECT_THROW(UdpServer(0, ""), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("Setting server socket option failed: ", ENOPROTOOPT)});
}

TEST_F(UdpServerTest, APortInUseIsAWarningAndTheEnd)
{
    const UdpPeer other; // does not share its port
    EXPECT_THROW(UdpServer(other.port(), ""), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("Bind() failed: ", EADDRINUSE)});
}

TEST_F(UdpServerTest, ADeviceThatDoesNotExistIsAWarningAndTheEnd)
{
    EXPECT_THROW(UdpServer(0, "no-such-device"), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("BindToDevice() failed: ", ENODEV)});
}

} // namespace
