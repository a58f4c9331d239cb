// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string_view>

// Hears how a long job on one card gets on.
class Observer
{
public:
    virtual ~Observer() = default;

    // A sentence without the card's name.
    virtual void note(std::string_view text) = 0;
    virtual void warning(std::string_view text) = 0;
    // Replaces the one before: what is being done, what there is to say of it, and how much of it all is done.
    virtual void progress(std::string_view phase, std::string_view details, std::optional<double> percent) = 0;
};
