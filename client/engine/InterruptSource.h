// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"

#include <csignal>

// Turns the first Ctrl-C (or SIGTERM) into a readable descriptor for the event loop. From then on both signals have
// their usual effect again, so a second one ends the program even if its work hangs.
class InterruptSource
{
public:
    InterruptSource();
    ~InterruptSource();
    InterruptSource(const InterruptSource&) = delete;
    InterruptSource& operator=(const InterruptSource&) = delete;

    [[nodiscard]] int descriptor() const { return readEnd.get(); }

private:
    Descriptor readEnd;
    Descriptor writeEnd;
};
