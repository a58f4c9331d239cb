// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Observer.h"

#include <functional>
#include <string>
#include <vector>

// Keeps what a job tells of itself.
class RecordingObserver final : public Observer
{
public:
    void note(std::string_view text) override { notes.emplace_back(text); }
    void warning(std::string_view text) override { warnings.emplace_back(text); }
    void progress(std::string_view phase, std::string_view /*details*/, std::optional<double> percent) override
    {
        if (phases.empty() || phases.back() != phase) {
            phases.emplace_back(phase);
        }
        lastPercent = percent;
        if (onPhase) {
            onPhase(phase);
        }
    }

    std::vector<std::string> notes;
    std::vector<std::string> warnings;
    std::vector<std::string> phases; // each once, however often it was told in a row
    std::optional<double> lastPercent;
    std::function<void(std::string_view phase)> onPhase;
};
