// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/FuzzedConnection.h"

#include "fuzz/Descriptors.h"
#include "fuzz/Replies.h"
#include "support/Journal.h"
#include "support/Script.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr std::size_t longestStream = 65536; // what a socket takes before the daemon reads
constexpr const char* pnrDirectory = "/etc/pnr";

std::size_t waitingAt(int descriptor)
{
    int bytes = 0;
    ::ioctl(descriptor, FIONREAD, &bytes);
    return static_cast<std::size_t>(bytes);
}

SampleHeader nextHeader(int descriptor)
{
    Bytes bytes(SampleHeader::size);
    const ssize_t size = ::recv(descriptor, bytes.data(), bytes.size(), MSG_PEEK | MSG_DONTWAIT);
    return size == static_cast<ssize_t>(bytes.size()) ? SampleHeader::from(bytes) : SampleHeader();
}

bool isStreamCommand(std::uint16_t command)
{
    return std::ranges::find(tcpCommands, static_cast<CommandId>(command), &TcpCommand::id) != tcpCommands.end();
}

// Whatever follows the header. One that reads a payload first may not find what it announces.
bool answersAtOnce(std::uint16_t command)
{
    return command == 1 || command == 16;
}

Expectation expectedOf(const SampleHeader& request, std::size_t waiting)
{
    if (waiting < SampleHeader::size) {
        return noReply;
    }
    if (request.version != 1) {
        return refusal(3);
    }
    if (request.device != 5) {
        return refusal(4);
    }
    if (request.service != 4) {
        return refusal(5);
    }
    const bool isWhole = waiting - SampleHeader::size >= request.payloadLength;
    if (!isStreamCommand(request.commandId)) {
        return isWhole ? refusal(6) : noReply;
    }
    return handled(isWhole && answersAtOnce(request.commandId) ? 1 : 0);
}

// A header that is not there or refused ends the connection, and nothing else does.
bool endsConnection(const SampleHeader& request, std::size_t waiting)
{
    return waiting < SampleHeader::size || request.version != 1 || request.device != 5 || request.service != 4;
}

bool isName(const std::string& text)
{
    constexpr std::size_t longestName = 255;
    return !text.empty() && text.size() <= longestName && text != "." && text != ".." &&
           text.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

// What the report is made of, by name: the flash and three files, then names and contents in turn.
std::map<std::string, std::string> sourcesOf(std::span<const std::uint8_t> bytes)
{
    constexpr std::array<const char*, 4> fixed = {"/dev/mtd0ro", "/tmp/drav_pnr_assy", "/tmp/vemk_pnr_assy",
                                                  "/etc/pnr/squashfs"};
    constexpr std::size_t flashSize = 1024;
    constexpr std::size_t mostPieces = fixed.size() + 2 * 12; // with long names they fill a report, and more take long
    std::map<std::string, std::string> files;
    std::string name;
    for (std::size_t number = 0; !bytes.empty() && number < mostPieces; ++number) {
        const auto end = std::ranges::find(bytes, 0x1E);
        std::string piece(bytes.begin(), end);
        bytes = bytes.subspan(std::min(piece.size() + 1, bytes.size()));
        if (number < fixed.size()) {
            if (number == 0 && piece.size() % 2 == 0) { // else it may be a flash that ends too early
                piece.resize(std::max(piece.size(), flashSize), '\xFF');
            }
            files[fixed[number]] = std::move(piece);
        } else if (number % 2 == 0) {
            name = std::move(piece);
        } else if (isName(name)) {
            files[std::string(pnrDirectory) + "/" + name] = std::move(piece);
        }
    }
    return files;
}

} // namespace

FuzzedConnection::FuzzedConnection()
{
    uci.set("system.@system[0].hostname", "card7");
    uci.set("system.ntp.server", "10.1.2.3");
    for (const char* directory : {"/tmp/upgrade", "/var", "/dev", "/etc/rc.d", pnrDirectory}) {
        sandbox.makeDirectory(directory);
    }
    service.open(
        {.port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 0, .deviceName = nullptr, .broadcast = 0});
    failNext("recv", ENOTCONN); // the socket that a service starts with is not connected
    service.dispatch();
}

void FuzzedConnection::connect(std::span<const std::uint8_t> bytes)
{
    forgetCalls();
    log.clear();
    std::array<int, 2> ends = {};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0 ||
        ::send(ends[0], bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()) ||
        ::shutdown(ends[0], SHUT_WR) != 0) {
        throw std::runtime_error("no connection");
    }
    client = ends[0];
    returnNext("accept", ends[1]);
    service.acceptPeer();
}

FuzzedConnection::Exchange FuzzedConnection::serve()
{
    constexpr std::size_t longestReply = 8192;
    Exchange exchange;
    exchange.waiting = waitingAt(service.peerDescriptor());
    exchange.request = nextHeader(service.peerDescriptor());
    service.dispatch();
    exchange.reply.resize(longestReply);
    const ssize_t size = ::recv(client, exchange.reply.data(), exchange.reply.size(), MSG_DONTWAIT);
    exchange.reply.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    exchange.isOpen = service.peerDescriptor() != -1;
    return exchange;
}

std::string FuzzedConnection::feedStream(std::span<const std::uint8_t> bytes)
{
    const int descriptor = lowestFreeDescriptor();
    connect(bytes.first(std::min(bytes.size(), longestStream)));
    std::string problem;
    while (problem.empty() && service.peerDescriptor() != -1) {
        const Exchange exchange = serve();
        const Expectation expected = expectedOf(exchange.request, exchange.waiting);
        if (exchange.isOpen == endsConnection(exchange.request, exchange.waiting)) {
            problem = exchange.isOpen ? "the connection stays" : "the connection is ended";
        } else if (exchange.reply.empty()) {
            problem = expected.least > 0 ? "no reply" : "";
        } else if (expected.most == 0) {
            problem = "a reply too many: " + hex(exchange.reply);
        } else {
            problem = objectionToReply(exchange.reply, exchange.request, expected);
        }
    }
    ::close(client);
    return problem.empty() && lowestFreeDescriptor() != descriptor ? "a descriptor is left open" : problem;
}

// Only what differs from the input before, which is little as a rule: a file is slow to write.
void FuzzedConnection::writeSources(std::map<std::string, std::string> files)
{
    for (const auto& [name, content] : sources) {
        if (!files.contains(name)) {
            std::filesystem::remove(sandbox.path(name));
        }
    }
    for (const auto& [name, content] : files) {
        const auto known = sources.find(name);
        if (known == sources.end() || known->second != content) {
            sandbox.write(name, content);
        }
    }
    sources = std::move(files);
}

std::string FuzzedConnection::feedSources(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t longestText = 2047;
    constexpr std::size_t textStart = SampleHeader::size + 4;
    constexpr std::string_view opening = "<Versions>\n";
    constexpr std::string_view closing = "</Versions>";
    writeSources(sourcesOf(bytes));
    const int descriptor = lowestFreeDescriptor();
    connect(SampleHeader{.commandId = 1}.bytes());
    const Exchange exchange = serve();
    service.dispatch(); // the end of the stream
    ::close(client);
    if (lowestFreeDescriptor() != descriptor) {
        return "a descriptor is left open";
    }
    if (std::string problem = objectionToReply(exchange.reply, exchange.request, {1, 1, 1, 1}); !problem.empty()) {
        return problem;
    }
    const std::string text = textOf(exchange.reply);
    if (exchange.reply.size() > textStart + longestText + 1 || !text.starts_with(opening) || !text.ends_with(closing)) {
        return "no whole report: " + text;
    }
    return {};
}
