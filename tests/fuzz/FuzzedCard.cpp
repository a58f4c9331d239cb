// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/FuzzedCard.h"

#include "fuzz/Descriptors.h"
#include "fuzz/Replies.h"
#include "protocol/DatagramBuffer.h"
#include "services/Envelope.h"
#include "services/IpConfigSet.h"
#include "services/TimeReferenceMessages.h"
#include "support/Journal.h"

#include <algorithm>
#include <string_view>

namespace
{

constexpr std::size_t largestDatagram = 8192; // twice what the card looks at

bool isHarmless(std::string_view command)
{
    constexpr std::string_view wordCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                                " _-.=/@[]>";
    return command == "reboot -d 2 &" || command.find_first_not_of(wordCharacters) == std::string_view::npos;
}

std::string checkCommands()
{
    for (const std::string& command : FakeSystem::commands()) {
        if (!isHarmless(command)) {
            return "the shell was given: " + command;
        }
    }
    return {};
}

// A name can also be written with character references, or in another encoding.
bool mayName(std::span<const std::uint8_t> bytes, std::string_view name)
{
    const std::string text(bytes.begin(), bytes.end());
    return text.find(name) != std::string::npos || text.find('&') != std::string::npos ||
           text.find("encoding") != std::string::npos;
}

bool isDatagramCommand(std::uint16_t command)
{
    return std::ranges::find(udpCommands, static_cast<CommandId>(command), &UdpCommand::id) != udpCommands.end();
}

Expectation expectedFor(std::span<const std::uint8_t> datagram)
{
    if (datagram.size() < SampleHeader::size) {
        return noReply;
    }
    const SampleHeader request = SampleHeader::from(datagram);
    if (request.version != 1) {
        return refusal(3);
    }
    if (request.service != 4) {
        return refusal(5);
    }
    if (request.device != 5 || (request.commandId & 0x8000) != 0) {
        return noReply;
    }
    return isDatagramCommand(request.commandId) ? handled(0) : refusal(6);
}

// What decoding does, encoding undoes, byte for byte and within the bytes.
bool survivesTheRoundTrip(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() < headerSize) {
        return true;
    }
    const Bytes before(bytes.begin() + headerSize, bytes.end());
    Bytes sections = before;
    const std::uint8_t format = bytes[5];
    decodeDatagramSections(format, std::as_writable_bytes(std::span(sections)));
    encodeDatagramSections(format, std::as_writable_bytes(std::span(sections)));
    return sections == before;
}

} // namespace

FuzzedCard::FuzzedCard()
{
    uci.set("system.@system[0].hostname", "card7");
    uci.set("system.ntp.server", "10.1.2.3");
    uci.set("network.lanvemt2eth1.proto", "static");
    uci.set("network.lanvemt2eth1.ipaddr", "192.168.1.10");
    uci.set("network.lanvemt2eth2.proto", "dhcp");
    service = std::make_unique<TarvelServiceUdp>();
    service->open(
        {.port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 0, .deviceName = nullptr, .broadcast = 1});
}

void FuzzedCard::forgetThePast()
{
    forgetCalls();
    log.clear();
    while (!requester.hasNothing()) {
        static_cast<void>(requester.receive());
    }
}

std::string FuzzedCard::feedDatagram(std::span<const std::uint8_t> bytes)
{
    forgetThePast();
    const auto datagram = bytes.first(std::min(bytes.size(), largestDatagram));
    if (!survivesTheRoundTrip(datagram)) {
        return "the sections changed on their way to host order and back";
    }
    requester.send(boundPort(service->descriptor()), Bytes(datagram.begin(), datagram.end()));
    service->processDatagram();
    if (std::string problem = checkReply(datagram); !problem.empty()) {
        return problem;
    }
    if (!FakeSystem::commands().empty() && !mayName(datagram, "card7")) {
        return "a command for another card: " + FakeSystem::commands().front();
    }
    return checkCommands();
}

std::string FuzzedCard::checkReply(std::span<const std::uint8_t> request)
{
    const Expectation expected = expectedFor(request);
    const std::size_t replies = callsTo("sendto").size();
    if (replies < expected.least || replies > expected.most) {
        return "a wrong number of replies: " + std::to_string(replies);
    }
    return replies == 0 ? "" : objectionToReply(requester.receive(), SampleHeader::from(request), expected);
}

std::string FuzzedCard::feedSession(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t lengthSize = 2;
    const int descriptor = lowestFreeDescriptor();
    while (bytes.size() >= lengthSize) {
        const std::size_t length = bytes[0] + std::size_t{256} * bytes[1];
        bytes = bytes.subspan(lengthSize);
        const auto datagram = bytes.first(std::min(bytes.size(), length));
        if (std::string problem = feedDatagram(datagram); !problem.empty()) {
            return problem;
        }
        bytes = bytes.subspan(datagram.size());
    }
    return lowestFreeDescriptor() != descriptor ? "a descriptor is left open" : "";
}

std::string FuzzedCard::feedDocument(std::span<const std::uint8_t> bytes)
{
    forgetThePast();
    const std::string document(bytes.begin(), bytes.end());
    std::string from;
    std::string to;
    parseEnvelope(document, from, to);
    configureInterfaces(document);
    std::string problem = checkCommands();
    // On purpose last: an NTP server is handed to the shell as it stands.
    parseTimeReferenceConfiguration(document);
    return problem;
}
