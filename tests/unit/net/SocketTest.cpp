// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/Socket.h"

#include "support/ErrorText.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

bool isOpen(int descriptor)
{
    return fcntl(descriptor, F_GETFD) != -1;
}

int optionOf(int descriptor, int option)
{
    int value = -1;
    socklen_t length = sizeof value;
    getsockopt(descriptor, SOL_SOCKET, option, &value, &length);
    return value;
}

class SocketTest : public SystemTest
{
protected:
    SocketTest() : number(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }

    int number; // of an open descriptor
    sockaddr_in address = {};
};

class OpenSocketTest : public SocketTest
{
protected:
    OpenSocketTest() { socket.adopt(number, address); }

    Socket socket;
};

TEST_F(SocketTest, ANewSocketHasNoDescriptor)
{
    const Socket socket;
    EXPECT_EQ(socket.descriptor(), -1);
    close(number);
}

TEST_F(SocketTest, ANewSocketHasAnAddressOfZeros)
{
    const Socket socket;
    const sockaddr_in zeros = {};
    EXPECT_EQ(std::memcmp(&socket.boundAddress(), &zeros, sizeof zeros), 0);
    close(number);
}

TEST_F(SocketTest, ASocketWithoutDescriptorHasNothingToClose)
{
    {
        Socket socket;
        socket.close();
    }
    EXPECT_TRUE(callsTo("close").empty());
    EXPECT_TRUE(log.lines().empty());
    close(number);
}

TEST_F(SocketTest, TheEndOfTheObjectClosesTheDescriptor)
{
    {
        Socket socket;
        socket.adopt(number, address);
    }
    EXPECT_FALSE(isOpen(number));
    EXPECT_EQ(log.lines(), (Lines{{6, "Socket (" + std::to_string(number) + ") successfully closed"}}));
}

TEST_F(SocketTest, ASocketIsDestroyedThroughItsBase)
{
    struct Derived : Socket {
        explicit Derived(bool& itsEnd) : end(itsEnd) {}
        ~Derived() override { end = true; }
        bool& end;
    };
    bool destroyed = false;
    std::unique_ptr<Socket> socket = std::make_unique<Derived>(destroyed);
    socket.reset();
    EXPECT_TRUE(destroyed);
    close(number);
}

TEST_F(OpenSocketTest, AdoptTakesDescriptorAndAddress)
{
    EXPECT_EQ(socket.descriptor(), number);
    EXPECT_EQ(std::memcmp(&socket.boundAddress(), &address, sizeof address), 0);
}

TEST_F(OpenSocketTest, CloseSaysThatTheSocketIsClosed)
{
    socket.close();
    EXPECT_EQ(socket.descriptor(), -1);
    EXPECT_FALSE(isOpen(number));
    EXPECT_EQ(log.lines(), (Lines{{6, "Socket (" + std::to_string(number) + ") successfully closed"}}));
}

TEST_F(OpenSocketTest, ASecondCloseDoesNothing)
{
    socket.close();
    log.clear();
    socket.close();
    EXPECT_EQ(callsTo("close").size(), 1U);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, ACloseThatFailsIsAWarning)
{
    failNext("close", EIO);
    socket.close();
    const std::string text = "Failed to close socket (" + std::to_string(number) + "): ";
    EXPECT_EQ(log.lines(), (Lines{{4, errorText(text, EIO)}}));
}

TEST_F(OpenSocketTest, ACloseThatFailsKeepsTheDescriptorSoThatALaterOneTriesAgain)
{
    failNext("close", EINTR);
    socket.close();
    EXPECT_EQ(socket.descriptor(), number);
    socket.close();
    EXPECT_EQ(socket.descriptor(), -1);
    EXPECT_FALSE(isOpen(number));
}

TEST_F(OpenSocketTest, SetReuseAddressSetsTheOption)
{
    EXPECT_EQ(socket.setReuseAddress(1), 0);
    EXPECT_EQ(optionOf(number, SO_REUSEADDR), 1);
    EXPECT_EQ(socket.setReuseAddress(0), 0);
    EXPECT_EQ(optionOf(number, SO_REUSEADDR), 0);
}

TEST_F(OpenSocketTest, SetReuseAddressFailsSilently)
{
    failNext("setsockopt", ENOPROTOOPT);
    EXPECT_EQ(socket.setReuseAddress(1), -1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, SetDontRouteSetsTheOption)
{
    EXPECT_EQ(socket.setDontRoute(1), 0);
    EXPECT_EQ(optionOf(number, SO_DONTROUTE), 1);
}

TEST_F(OpenSocketTest, SetDontRouteFailsSilently)
{
    failNext("setsockopt", ENOPROTOOPT);
    EXPECT_EQ(socket.setDontRoute(1), -1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, BindBindsToTheAddress)
{
    EXPECT_EQ(socket.bind(), 0);
    EXPECT_NE(boundPort(number), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, BindFailsSilently)
{
    failNext("bind", EADDRINUSE);
    EXPECT_EQ(socket.bind(), -1);
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, BindToDeviceBindsToTheNamedDevice)
{
    EXPECT_EQ(socket.bindToDevice("lo"), 0);
    EXPECT_EQ(callsTo("setsockopt"), Texts{"SO_BINDTODEVICE lo"});
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, BindToDeviceFailsSilently)
{
    failNext("setsockopt", ENODEV);
    EXPECT_EQ(socket.bindToDevice("eth7"), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, ParseAddressStoresNetworkOrder)
{
    std::uint32_t parsed = 0;
    EXPECT_EQ(Socket::parseAddress("10.1.2.3", parsed), 0);
    EXPECT_EQ(parsed, htonl(0x0A010203));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OpenSocketTest, ParseAddressTakesShortForms)
{
    std::uint32_t parsed = 0;
    EXPECT_EQ(Socket::parseAddress("127.1", parsed), 0);
    EXPECT_EQ(parsed, htonl(INADDR_LOOPBACK));
}

TEST_F(OpenSocketTest, ParseAddressNamesAnInvalidAddressInAWarning)
{
    std::uint32_t parsed = 0;
    EXPECT_EQ(Socket::parseAddress("1.2.3.256", parsed), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, "Invalid IP address (1.2.3.256)"}}));
}

TEST_F(OpenSocketTest, ParseAddressLeavesTheResultOfAnInvalidAddress)
{
    std::uint32_t parsed = 4711;
    Socket::parseAddress("", parsed);
    EXPECT_EQ(parsed, 4711U);
}

} // namespace
