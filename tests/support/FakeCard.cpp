// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/FakeCard.h"

#include <array>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr std::uint16_t knownPort = 50003;
constexpr std::size_t headSize = 20;
constexpr std::size_t commandPlace = 8;
constexpr std::size_t sequencePlace = 12;
constexpr std::size_t lengthPlace = 16;

std::uint32_t numberAt(const std::string& bytes, std::size_t place, std::size_t size)
{
    std::uint32_t value = 0;
    for (std::size_t index = size; index > 0; --index) {
        value = value << 8 | static_cast<std::uint8_t>(bytes.at(place + index - 1));
    }
    return value;
}

std::string little(std::uint32_t value, std::size_t size)
{
    std::string bytes;
    for (std::size_t index = 0; index < size; ++index) {
        bytes += static_cast<char>(value >> 8 * index & 0xFF);
    }
    return bytes;
}

FakeCard::Request requestIn(const std::string& bytes)
{
    FakeCard::Request request;
    request.command = static_cast<std::uint16_t>(numberAt(bytes, commandPlace, 2));
    if (bytes.size() > headSize + 4) {
        request.text = bytes.substr(headSize + 4, bytes.size() - headSize - 5);
    }
    return request;
}

std::string replyWith(const FakeCard::Answer& answer, const std::string& request)
{
    const std::string text = answer.text + '\0';
    const std::string payload =
        answer.bytes.value_or(answer.text.empty() ? "" : little(static_cast<std::uint32_t>(text.size()), 4) + text);
    const auto format = static_cast<char>(payload.empty() ? 0 : 1);
    const auto command = static_cast<std::uint16_t>(numberAt(request, commandPlace, 2) | 0x8000U);
    return std::string{static_cast<char>(answer.startPattern), '\xc3', '\x9a', '\xff', 1, format, 5, 4} +
           little(command, 2) + static_cast<char>(answer.status) + '\1' + request.substr(sequencePlace, 4) +
           little(static_cast<std::uint32_t>(payload.size()), 4) + payload;
}

sockaddr_in onLoopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

// 0 if the port is taken.
std::uint16_t bindTo(int descriptor, std::uint16_t port)
{
    sockaddr_in address = onLoopback(port);
    socklen_t size = sizeof address;
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), size) == -1) {
        return 0;
    }
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

// Up to `size` bytes more; fewer if the other side ends.
void receive(int descriptor, std::string& bytes, std::size_t size)
{
    if (size == 0) {
        return; // recv() would wait all the same
    }
    std::string piece(size, '\0');
    const ssize_t received = ::recv(descriptor, piece.data(), size, MSG_WAITALL);
    bytes.append(piece, 0, received > 0 ? static_cast<std::size_t>(received) : 0);
}

} // namespace

FakeCard::FakeCard()
    : stopDescriptor(::eventfd(0, EFD_CLOEXEC)),
      datagrams(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
      listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    number = bindTo(datagrams, 0);
    for (int tries = 0; bindTo(listener, number) == 0; ++tries) { // another test may have it
        if (tries == 20) {
            throw std::runtime_error("no port is free for datagrams and connections");
        }
        ::close(datagrams);
        datagrams = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        number = bindTo(datagrams, 0);
    }
    ::listen(listener, 8);
    mapping.emplace(knownPort, number);
    thread = std::thread([this] { serve(); });
}

FakeCard::~FakeCard()
{
    [[maybe_unused]] const int woken = ::eventfd_write(stopDescriptor, 1);
    thread.join();
    refuseConnections();
    ::close(datagrams);
    ::close(stopDescriptor);
}

void FakeCard::answer(std::uint16_t command, Answer always)
{
    behave(command, [always = std::move(always)](const Request&) { return always; });
}

void FakeCard::behave(std::uint16_t command, Behaviour behaviour)
{
    const std::lock_guard lock(mutex);
    behaviours[command] = std::move(behaviour);
}

void FakeCard::refuseConnections()
{
    if (listener != -1) {
        ::close(std::exchange(listener, -1)); // poll() passes over it then
    }
}

std::vector<FakeCard::Request> FakeCard::requests() const
{
    const std::lock_guard lock(mutex);
    return heard;
}

std::vector<std::string> FakeCard::texts(std::uint16_t command) const
{
    std::vector<std::string> found;
    for (const Request& request : requests()) {
        if (request.command == command) {
            found.push_back(request.text);
        }
    }
    return found;
}

void FakeCard::serve()
{
    for (;;) {
        std::array<pollfd, 3> polled{{{stopDescriptor, POLLIN, 0}, {datagrams, POLLIN, 0}, {listener, POLLIN, 0}}};
        ::poll(polled.data(), polled.size(), -1);
        if (polled[0].revents != 0) {
            return;
        }
        if (polled[1].revents != 0) {
            serveDatagram();
        }
        if (polled[2].revents != 0) {
            serveConnection();
        }
    }
}

// A behaviour may change the others, so it runs without the lock.
FakeCard::Answer FakeCard::answerTo(const Request& asked) const
{
    Behaviour behaviour = [](const Request&) { return Answer{.hangsUp = true}; };
    {
        const std::lock_guard lock(mutex);
        heard.push_back(asked);
        const auto known = behaviours.find(asked.command);
        if (known != behaviours.end()) {
            behaviour = known->second;
        }
    }
    return behaviour(asked);
}

void FakeCard::serveDatagram() const
{
    std::string bytes(65536, '\0');
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    const ssize_t received =
        ::recvfrom(datagrams, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&sender), &size);
    if (received < static_cast<ssize_t>(headSize)) {
        return;
    }
    bytes.resize(static_cast<std::size_t>(received));
    const Answer answer = answerTo(requestIn(bytes));
    if (!answer.hangsUp && !answer.keepsSilent) {
        const std::string reply = replyWith(answer, bytes);
        for (int sent = 0; sent < answer.copies; ++sent) {
            ::sendto(datagrams, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr*>(&sender), size);
        }
    }
}

// One request a connection, as the client does it.
void FakeCard::serveConnection() const
{
    const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    std::string bytes;
    receive(connection, bytes, headSize);
    if (bytes.size() == headSize) {
        receive(connection, bytes, numberAt(bytes, lengthPlace, 4));
        const Answer answer = answerTo(requestIn(bytes));
        const std::string reply = replyWith(answer, bytes);
        if (answer.keepsSilent) {
            receive(connection, bytes, 1);
        } else if (!answer.hangsUp) {
            ::send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
        }
    }
    ::close(connection);
}
