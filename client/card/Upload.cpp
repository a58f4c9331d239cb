// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Upload.h"

#include "client/wire/Phase.h"

#include <algorithm>
#include <fmt/core.h>
#include <poll.h>

namespace
{

// All chosen, not measured.
constexpr std::size_t pieceSize = 262144; // several of what a socket takes at once, and little memory for 64 cards
constexpr Seconds glance{0.2};            // between two looks at a transfer: progress that people see move
constexpr Seconds shortGlance{0.02};      // at its end, which is no event: the kernel has to be asked
constexpr double stallWarning = 3.0;      // seconds without progress until people are told

constexpr const char* sending = "sending the archive";
constexpr const char* unpacking = "waiting for the card to unpack";

Failure stalled(std::string phase, double seconds)
{
    return {ExitCode::noAnswer, Category::stalled, std::move(phase),
            fmt::format("no sign of progress for {:.0f} s; the card may still be at work", seconds)};
}

Failure fileChanged(const std::string& path)
{
    return {ExitCode::badFile, Category::badArchive, "reading the archive",
            fmt::format("{} has changed since it was checked, or became unreadable", path)};
}

bool hasInput(const TcpConnection& connection)
{
    pollfd polled = {connection.descriptor(), POLLIN, 0};
    return ::poll(&polled, 1, 0) == 1;
}

} // namespace

Upload::Upload(Network& newNetwork, Observer& newObserver, const Archive& newArchive, CommandId command,
               Seconds newPatience)
    : network(newNetwork),
      observer(newObserver),
      archive(newArchive),
      request(bareRequest(command)),
      patience(newPatience),
      total(headerSize + sectionCountSize + archive.size),
      meter(total)
{
    request.header.messageFormat = section8Bit;
    request.payload.resize(sectionCountSize);
    writeLittle32(std::span(request.payload).first<sectionCountSize>(), static_cast<std::uint32_t>(archive.size));
    request.streamed = archive.size;
}

Task<void> Upload::send(Endpoint endpoint)
{
    try {
        co_await exchange(std::move(endpoint));
    } catch (const Interrupted&) {
        throw interrupted();
    }
}

Task<void> Upload::exchange(Endpoint endpoint)
{
    // Before a card hears of it: what was found good is not what would be sent.
    if (!archive.file.isUnchanged()) {
        throw fileChanged(archive.path);
    }
    TcpConnection connection = co_await network.connect(std::move(endpoint), request);
    start = Clock::now();
    const bool open = co_await inPhase(sending, connection.sendRequest(network.deadline()));
    if (open) {
        sent = headerSize + sectionCountSize;
        co_await sendArchive(connection);
    }
    // So that the speed is that of the card, and not of a buffer here.
    co_await awaitAcknowledgement(connection);
    duration = Seconds(Clock::now() - start).count();
    co_await awaitAnswer(connection);
}

// Stops early when the card answers early, which it does when its disk is full, or when it closes its side.
Task<void> Upload::sendArchive(TcpConnection& connection)
{
    while (sent < total && !answered) {
        // A glance at most, so that a transfer that stands still is seen, too.
        const std::vector<pollfd> either(1, pollfd{connection.descriptor(), POLLIN | POLLOUT, 0});
        co_await network.eventLoop().ready(either, after(glance));
        look(connection);
        if (answered || !sendPiece(connection)) {
            co_return; // the answer, if there is one, is read before the broken connection is told
        }
    }
}

bool Upload::sendPiece(TcpConnection& connection)
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
    const ssize_t size = archive.file.read(std::as_writable_bytes(std::span(buffer)), fileRead);
    // Looked at behind the reading: a card that lacks a part of the archive installs nothing.
    if (size < 0 || static_cast<std::size_t>(size) != buffer.size() || !archive.file.isUnchanged()) {
        throw fileChanged(archive.path);
    }
    fileRead += buffer.size();
}

Task<void> Upload::awaitAcknowledgement(TcpConnection& connection)
{
    while (isWhole() && !meter.isComplete() && !answered) {
        co_await network.eventLoop().readable(connection.descriptor(), after(shortGlance));
        look(connection);
    }
}

// Looks after the transfer: progress for people, a stall, an early answer.
void Upload::look(const TcpConnection& connection)
{
    answered = hasInput(connection);
    const std::uint64_t waiting = connection.unacknowledged();
    meter.update(Seconds(Clock::now() - start).count(), sent - std::min(sent, waiting));
    observer.progress("sending", meter.text(), meter.percent());
    if (meter.secondsSilent() > patience.count()) {
        throw stalled(sending, meter.secondsSilent());
    }
    if (meter.secondsSilent() > stallWarning && !stallTold) {
        stallTold = true;
        observer.warning(
            fmt::format("the transfer stalls: the card has taken nothing for {:.0f} s", meter.secondsSilent()));
    }
}

Task<void> Upload::awaitAnswer(TcpConnection& connection)
{
    const std::string phase = isWhole() ? unpacking : sending;
    observer.progress("unpacking", {}, meter.percent());
    const bool ready = co_await network.eventLoop().readable(connection.descriptor(), after(patience));
    if (!ready) {
        throw stalled(phase, patience.count());
    }
    // Before the reply is read: until then, what is still on its way may be taken after all.
    const bool whole = isWhole() && connection.unacknowledged() == 0;
    const Reply reply = co_await inPhase(phase, connection.receiveReply(network.deadline()));
    inPhase(phase, [&] {
        checkStatus(reply.header);
        if (!whole) {
            throw garbage("success was said before the whole archive was there; what the card has done is not known");
        }
    });
}

Failure Upload::interrupted() const
{
    const bool upgrades = request.header.commandId == static_cast<std::uint16_t>(CommandId::firmwareUpgrade);
    std::string state = "not the whole archive was sent, so that nothing is installed; the card may hold a part of it, "
                        "which the next upload overwrites";
    if (sent == 0) {
        state = "nothing was sent; the card is as it was";
    } else if (isWhole()) {
        state = upgrades ? "the whole archive was sent: the card may unpack and install it all the same"
                         : "the whole archive was sent: the card may unpack it all the same, and installs nothing";
    }
    return {ExitCode::interrupted, Category::interrupted, isWhole() ? unpacking : sending, std::move(state)};
}
