// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Upload.h"

#include "client/cli/Context.h"
#include "client/output/Console.h"
#include "client/wire/Network.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/core.h>
#include <poll.h>
#include <unistd.h>

namespace
{

constexpr std::size_t pieceSize = 262144;
constexpr Seconds glance{0.2};       // between two looks at a transfer
constexpr double stallWarning = 3.0; // seconds without progress until people are told

Failure stalled(std::string phase, double seconds)
{
    return {ExitCode::noAnswer, "stalled", std::move(phase),
            fmt::format("no sign of progress for {:.0f} s; the card may still be at work", seconds)};
}

Failure fileChanged(const std::string& path)
{
    return {ExitCode::badFile, "bad-archive", "reading the archive",
            fmt::format("{} changed or became unreadable while it was sent", path)};
}

bool hasInput(const TcpConnection& connection)
{
    pollfd polled = {connection.descriptor(), POLLIN, 0};
    return ::poll(&polled, 1, 0) == 1;
}

} // namespace

Upload::Upload(Context& newContext, std::string newLabel, const Archive& newArchive, CommandId command,
               Seconds newPatience)
    : context(newContext),
      label(std::move(newLabel)),
      archive(newArchive),
      request(bareRequest(command)),
      patience(newPatience),
      total(headerSize + 4 + archive.size),
      meter(total)
{
    request.header.messageFormat = section8Bit;
    request.header.payloadLength = static_cast<std::uint32_t>(archive.size + 4);
    request.changesCard = true;
}

Bytes Upload::head() const
{
    Bytes bytes = encodeHeader(request.header);
    bytes.resize(headerSize + 4);
    writeLittle32(std::span(bytes).subspan<headerSize, 4>(), static_cast<std::uint32_t>(archive.size));
    return bytes;
}

Task<void> Upload::send(Endpoint endpoint)
{
    bool stopped = false;
    try {
        co_await exchange(std::move(endpoint));
    } catch (const Interrupted&) {
        stopped = true;
    }
    context.console.progress("");
    if (stopped) {
        throw interrupted();
    }
}

Task<void> Upload::exchange(Endpoint endpoint)
{
    file = Descriptor(::open(archive.path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) {
        throw fileChanged(archive.path);
    }
    TcpConnection connection = co_await context.network.connect(std::move(endpoint));
    start = Clock::now();
    buffer = head();
    co_await sendArchive(connection);
    co_await awaitAcknowledgement(connection);
    duration = Seconds(Clock::now() - start).count();
    co_await awaitAnswer(connection);
}

// Stops early when the card answers early, which it does when its disk is full, or when it closes its side.
Task<void> Upload::sendArchive(TcpConnection& connection)
{
    while (sent < total && !answered) {
        const std::vector<pollfd> either(1, pollfd{connection.descriptor(), POLLIN | POLLOUT, 0});
        co_await context.loop.ready(either, after(glance));
        look(connection);
        if (answered || !sendPiece(connection)) {
            co_return; // the answer, if there is one, is read before the broken connection is told
        }
    }
}

bool Upload::sendPiece(const TcpConnection& connection)
{
    if (bufferSent == buffer.size()) {
        refill();
    }
    const long size = connection.sendSome(std::span(buffer).subspan(bufferSent));
    if (size == -1) {
        return false;
    }
    bufferSent += static_cast<std::size_t>(size);
    sent += static_cast<std::uint64_t>(size);
    return true;
}

void Upload::refill()
{
    buffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, archive.size - fileRead)));
    bufferSent = 0;
    const ssize_t size = ::pread(file.get(), buffer.data(), buffer.size(), static_cast<off_t>(fileRead));
    if (size < 0 || static_cast<std::size_t>(size) != buffer.size()) {
        throw fileChanged(archive.path);
    }
    fileRead += buffer.size();
}

Task<void> Upload::awaitAcknowledgement(TcpConnection& connection)
{
    while (sent == total && !meter.isComplete() && !answered) {
        co_await context.loop.readable(connection.descriptor(), after(std::min(glance, Seconds(0.02))));
        look(connection);
    }
}

// Looks after the transfer: progress for people, a stall, an early answer.
void Upload::look(const TcpConnection& connection)
{
    answered = hasInput(connection);
    const std::uint64_t waiting = connection.unacknowledged();
    meter.update(Seconds(Clock::now() - start).count(), sent - std::min(sent, waiting));
    context.console.progress(fmt::format("{}: sending, {}", label, meter.text()));
    if (meter.secondsSilent() > patience.count()) {
        throw stalled("sending the archive", meter.secondsSilent());
    }
    if (meter.secondsSilent() > stallWarning && !stallTold) {
        stallTold = true;
        context.console.warning(fmt::format("{}: the transfer stalls: the card has taken nothing for {:.0f} s", label,
                                            meter.secondsSilent()));
    }
}

Task<void> Upload::awaitAnswer(TcpConnection& connection)
{
    const std::string phase = sent < total ? "sending the archive" : "waiting for the card to unpack";
    const TimePoint since = Clock::now();
    const TimePoint end = after(patience);
    bool ready = false;
    while (!ready) {
        context.console.progress(fmt::format("{}: unpacking, {:.0f} s", label, Seconds(Clock::now() - since).count()));
        ready = co_await context.loop.readable(connection.descriptor(), std::min(end, after(Seconds(1))));
        if (!ready && Clock::now() >= end) {
            throw stalled(phase, patience.count());
        }
    }
    const Reply reply = co_await connection.receiveReply(request, context.network.deadline(), phase);
    checkStatus(reply.header, phase);
}

Failure Upload::interrupted() const
{
    const bool whole = sent == total;
    const bool upgrades = request.header.commandId == static_cast<std::uint16_t>(CommandId::firmwareUpgrade);
    std::string state = "nothing was installed; the card holds a partial archive that the next upload overwrites";
    if (sent == 0) {
        state = "nothing was sent; the card is as it was";
    } else if (whole) {
        state = upgrades ? "the card has the whole archive: it unpacks and installs it all the same"
                         : "the card has the whole archive: it unpacks it all the same, and installs nothing";
    }
    return {ExitCode::interrupted, "interrupted", whole ? "waiting for the card to unpack" : "sending the archive",
            std::move(state)};
}
