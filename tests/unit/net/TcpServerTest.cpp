// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/TcpServer.h"

#include "net/SetupError.h"
#include "support/ErrorText.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"

#include <cerrno>

#include <fcntl.h>
#include <netinet/in.h>
#include <unistd.h>

namespace
{

using TcpServerTest = SystemTest;
using TcpServerSetupTest = SystemTest;

std::string created(const TcpServer& server)
{
    return "Stream socket (" + std::to_string(server.descriptor()) + ") successfully created";
}

TEST_F(TcpServerSetupTest, EachStepIsLogged)
{
    const TcpServer server(0);
    EXPECT_EQ(log.lines(), (Lines{{6, created(server)},
                                  {6, "Server socket options successfully set"},
                                  {6, "Bind() was successful"},
                                  {6, "Listen on port 0 was successful"}}));
}

TEST_F(TcpServerSetupTest, TheStepsAreTakenInOrder)
{
    const TcpServer server(0, INADDR_LOOPBACK, "lo");
    EXPECT_EQ(orderOf({"socket", "setsockopt", "bind", "listen"}),
              (Texts{"socket: SOCK_STREAM|SOCK_CLOEXEC", "setsockopt: SO_REUSEADDR 1", "bind: 127.0.0.1:0",
                     "setsockopt: SO_BINDTODEVICE lo", "listen: 0"}));
}

TEST_F(TcpServerSetupTest, ThePortIsLoggedInHostOrder)
{
    returnNext("bind", 0); // the port may be in use on this machine
    const TcpServer server(50003);
    EXPECT_EQ(log.infos().back(), "Listen on port 50003 was successful");
}

TEST_F(TcpServerSetupTest, ThePortAloneMeansAllAddressesAndNoDevice)
{
    returnNext("bind", 0);
    const TcpServer server(50003);
    EXPECT_EQ(callsTo("bind"), Texts{"0.0.0.0:50003"});
    EXPECT_EQ(callsTo("setsockopt"), Texts{"SO_REUSEADDR 1"});
}

TEST_F(TcpServerSetupTest, TheBacklogIsZeroBecauseThereIsOnePeerAtATime)
{
    const TcpServer server(0);
    EXPECT_EQ(callsTo("listen"), Texts{"0"});
}

TEST_F(TcpServerSetupTest, TheBoundAddressIsRemembered)
{
    returnNext("bind", 0);
    const TcpServer server(50003, 0x7F000001, "");
    EXPECT_EQ(server.boundAddress().sin_family, AF_INET);
    EXPECT_EQ(server.boundAddress().sin_port, htons(50003));
    EXPECT_EQ(server.boundAddress().sin_addr.s_addr, htonl(0x7F000001));
}

TEST_F(TcpServerSetupTest, AnAddressIsTakenInHostOrder)
{
    const TcpServer server(0, 0x7F000001, "");
    EXPECT_EQ(callsTo("bind"), Texts{"127.0.0.1:0"});
}

TEST_F(TcpServerSetupTest, AnAddressIsTakenAsText)
{
    const TcpServer server(0, "127.0.0.2", "");
    EXPECT_EQ(callsTo("bind"), Texts{"127.0.0.2:0"});
}

TEST_F(TcpServerSetupTest, ADeviceIsBoundToAndLogged)
{
    const TcpServer server(0, "127.0.0.1", "lo");
    EXPECT_EQ(log.texts(), (Texts{created(server), "Server socket options successfully set", "Bind() was successful",
                                  "BindToDevice (lo) was successful", "Listen on port 0 was successful"}));
}

TEST_F(TcpServerSetupTest, AnEmptyDeviceNameIsNotBoundTo)
{
    const TcpServer server(0, INADDR_LOOPBACK, "");
    EXPECT_EQ(callsTo("setsockopt"), Texts{"SO_REUSEADDR 1"});
    EXPECT_EQ(log.lines().size(), 4U);
}

TEST_F(TcpServerSetupTest, AnInvalidAddressTextIsAWarningAndTheEnd)
{
    EXPECT_THROW(TcpServer(0, "1.2.3.256", ""), SetupError);
    EXPECT_EQ(log.lines(), (Lines{{4, "Invalid IP address (1.2.3.256)"}}));
}

TEST_F(TcpServerSetupTest, AnAddressTextIsParsedBeforeAnythingElse)
{
    EXPECT_THROW(TcpServer(0, "", "lo"), SetupError);
    EXPECT_TRUE(callsTo("socket").empty());
}

TEST_F(TcpServerSetupTest, ASocketThatCannotBeCreatedIsAWarningAndTheEnd)
{
    failNext("socket", EMFILE);
    EXPECT_THROW(TcpServer(0), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("Creating stream socket failed: ", EMFILE)});
}

TEST_F(TcpServerSetupTest, AnOptionThatCannotBeSetIsAWarningAndTheEnd)
{
    failNext("setsockopt", ENOPROTOOPT);
    EXPECT_THROW(TcpServer(0), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("Setting server socket option failed: ", ENOPROTOOPT)});
    EXPECT_TRUE(callsTo("bind").empty());
}

TEST_F(TcpServerSetupTest, APortInUseIsAWarningAndTheEnd)
{
    const TcpServer first(0);
    EXPECT_THROW(TcpServer(boundPort(first.descriptor())), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("Bind() failed: ", EADDRINUSE)});
    EXPECT_EQ(callsTo("listen").size(), 1U);
}

TEST_F(TcpServerSetupTest, ADeviceThatDoesNotExistIsAWarningAndTheEnd)
{
    EXPECT_THROW(TcpServer(0, INADDR_LOOPBACK, "no-such-device"), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("BindToDevice() failed: ", ENODEV)});
    EXPECT_TRUE(callsTo("listen").empty());
}

TEST_F(TcpServerSetupTest, ASocketThatCannotListenIsAWarningAndTheEnd)
{
    failNext("listen", EADDRINUSE);
    EXPECT_THROW(TcpServer(0), SetupError);
    EXPECT_EQ(log.warnings(), Texts{errorText("listen() failed: ", EADDRINUSE)});
}

class TcpServerAcceptTest : public SystemTest
{
protected:
    TcpServerAcceptTest() { peer.close(); }

    TcpServer server{0};
    std::uint16_t port = boundPort(server.descriptor());
    TcpSocket peer;
};

TEST_F(TcpServerAcceptTest, AcceptGivesThePeerItsConnection)
{
    const TcpPeer client(port);
    EXPECT_EQ(server.accept(peer), 0);
    client.send({7});
    std::uint8_t byte = 0;
    EXPECT_EQ(peer.receive(&byte, 1, 0), 1);
    EXPECT_EQ(byte, 7);
}

TEST_F(TcpServerAcceptTest, AcceptStoresTheAddressOfTheClient)
{
    const TcpPeer client(port);
    server.accept(peer);
    EXPECT_EQ(peer.boundAddress().sin_family, AF_INET);
    EXPECT_EQ(peer.boundAddress().sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(peer.boundAddress().sin_port, htons(client.port()));
}

TEST_F(TcpServerAcceptTest, AcceptLogsTheClientAndBothPortsInHostOrder)
{
    returnNext("bind", 0); // the port may be in use on this machine; the kernel gives another one
    TcpServer famous(50003);
    const TcpPeer client(boundPort(famous.descriptor()));
    log.clear();
    famous.accept(peer);
    EXPECT_EQ(log.lines(),
              (Lines{{6, "Connection from 127.0.0.1 accepted on ports 50003/" + std::to_string(client.port())}}));
}

TEST_F(TcpServerAcceptTest, TheConnectionIsNotInheritedByShellCommands)
{
    const TcpPeer client(port);
    server.accept(peer);
    EXPECT_EQ(fcntl(peer.descriptor(), F_GETFD), FD_CLOEXEC);
}

TEST_F(TcpServerAcceptTest, AnAcceptThatFailsIsAWarning)
{
    log.clear();
    failNext("accept", EMFILE);
    EXPECT_EQ(server.accept(peer), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("accept() failed: ", EMFILE)}}));
}

TEST_F(TcpServerAcceptTest, AnAcceptThatFailsLeavesThePeerAsItIs)
{
    failNext("accept", EMFILE);
    server.accept(peer);
    EXPECT_EQ(peer.descriptor(), -1);
}

TEST_F(TcpServerAcceptTest, AcceptDoesNotCloseWhatThePeerHadBefore)
{
    TcpSocket other;
    const int before = other.descriptor();
    const TcpPeer client(port);
    server.accept(other);
    EXPECT_NE(other.descriptor(), before);
    EXPECT_EQ(fcntl(before, F_GETFD), FD_CLOEXEC);
    close(before);
}

TEST_F(TcpServerAcceptTest, TheServerGoesOnListening)
{
    const TcpPeer first(port);
    server.accept(peer);
    peer.close();
    const TcpPeer second(port);
    EXPECT_EQ(server.accept(peer), 0);
    EXPECT_EQ(peer.boundAddress().sin_port, htons(second.port()));
}

} // namespace
