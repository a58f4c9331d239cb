// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Observer.h"
#include "client/output/Console.h"

#include <fmt/core.h>
#include <string>

// Tells people how a job on a card gets on, under the name that they gave the card.
class ConsoleObserver final : public Observer
{
public:
    ConsoleObserver(Console& newConsole, const std::string& newLabel) : console(newConsole), label(newLabel) {}

    void note(std::string_view text) override { console.note(fmt::format("{}: {}", label, text)); }
    void warning(std::string_view text) override { console.warning(fmt::format("{}: {}", label, text)); }
    void progress(std::string_view phase, std::string_view details, std::optional<double> percent) override
    {
        console.progress(label, {std::string(phase), std::string(details), percent});
    }

private:
    Console& console;
    const std::string& label;
};
