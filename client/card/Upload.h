// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Observer.h"
#include "client/card/TransferMeter.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/firmware/Archive.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Frame.h"
#include "client/wire/Network.h"
#include "client/wire/TcpConnection.h"

#include <string>

// Sends an archive to one card, piece by piece from its file, and waits until the card has unpacked it. Lives as long
// as its task, and so does the archive.
class Upload
{
public:
    // `patience`: how long the card may take without a sign of progress.
    Upload(Network& newNetwork, Observer& newObserver, const Archive& newArchive, CommandId command,
           Seconds newPatience);

    // Ends when the card has said success. Throws NotSent in a dry run, else a Failure; an interruption becomes one
    // that tells in which state the card is.
    Task<void> send(Endpoint endpoint);

    // Does the card have the whole archive, or may it have it? Then it goes on, whatever becomes of the connection.
    [[nodiscard]] bool hasBegun() const { return sent > 0; }
    [[nodiscard]] bool isWhole() const { return sent == total; }
    [[nodiscard]] double seconds() const { return duration; }  // of the transfer
    [[nodiscard]] double rate() const { return meter.rate(); } // bytes a second

private:
    Task<void> exchange(Endpoint endpoint);
    Task<void> sendArchive(TcpConnection& connection);
    Task<void> awaitAcknowledgement(TcpConnection& connection);
    Task<void> awaitAnswer(TcpConnection& connection);
    bool sendPiece(TcpConnection& connection);
    void refill();
    void look(const TcpConnection& connection);
    [[nodiscard]] Failure interrupted() const;

    Network& network;
    Observer& observer;
    const Archive& archive;
    Request request;
    Seconds patience;
    Bytes buffer; // what was read of the archive
    std::size_t bufferSent = 0;
    std::uint64_t fileRead = 0;
    std::uint64_t total; // head and archive
    std::uint64_t sent = 0;
    TransferMeter meter;
    TimePoint start;
    double duration = 0;
    bool stallTold = false;
    bool answered = false;
};
