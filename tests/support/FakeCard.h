// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/PortMapping.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

// A card for client code that runs in this process: it hears broadcasts and accepts connections on the loopback device,
// on the port that is known to every client (see PortMapping), in a thread of its own. Nothing of it is the client's
// codec. What it is not told to answer, it leaves unanswered.
class FakeCard
{
public:
    struct Request {
        std::uint16_t command = 0;
        std::string text; // of its 8-bit section, without the final NUL
    };

    struct Answer {
        std::string text = {}; // none: the header alone
        std::uint8_t status = 1;
        std::optional<std::string> bytes = std::nullopt; // behind the header, instead of a text, however wrong
        std::uint8_t startPattern = 0x81;                // its first byte
        int copies = 1;                                  // of a datagram
        bool hangsUp = false;                            // closes the connection, or says nothing, instead
        bool keepsSilent = false;                        // says nothing, and serves nobody until the client hangs up
    };
    using Behaviour = std::function<Answer(const Request&)>;

    FakeCard();
    ~FakeCard();
    FakeCard(const FakeCard&) = delete;
    FakeCard& operator=(const FakeCard&) = delete;

    void answer(std::uint16_t command, Answer always);
    void behave(std::uint16_t command, Behaviour behaviour);

    // From inside a behaviour: no more connections are taken, as of a card that goes down.
    void refuseConnections();

    [[nodiscard]] std::vector<Request> requests() const;                       // so far, in their order
    [[nodiscard]] std::vector<std::string> texts(std::uint16_t command) const; // of the requests with this command
    [[nodiscard]] std::uint16_t port() const { return number; }

private:
    void serve();
    void serveDatagram() const;
    void serveConnection() const;
    Answer answerTo(const Request& asked) const;

    int stopDescriptor;
    int datagrams;
    int listener;
    std::uint16_t number = 0;
    std::optional<PortMapping> mapping;
    mutable std::mutex mutex;
    mutable std::vector<Request> heard;
    std::map<std::uint16_t, Behaviour> behaviours;
    std::thread thread;
};
