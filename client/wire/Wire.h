// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"
#include "client/wire/ReceiveBuffer.h"
#include "client/wire/SendGate.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>

enum class Direction { sent, received };

// Is shown each frame, with the address or interface on the other side; for people who look for a fault.
using FrameObserver = std::function<void(const std::string& peer, Direction, std::span<const std::byte> bytes)>;

// What all sockets of a run share.
struct Wire {
    EventLoop& loop;
    SendGate gate;
    FrameObserver observer; // may be empty
    // Of the sockets that are closed, of which some close when this is gone.
    std::shared_ptr<LostDatagrams> lost = std::make_shared<LostDatagrams>();

    void show(const std::string& peer, Direction direction, std::span<const std::byte> bytes) const
    {
        if (observer) {
            observer(peer, direction, bytes);
        }
    }
};
