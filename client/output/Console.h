// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Everything that is not data: stderr. Colour only on a terminal and without NO_COLOR; data never has any.
class Console
{
public:
    Console(bool quiet, bool verbose);

    void note(std::string_view text) const;    // silenced by --quiet
    void warning(std::string_view text) const; // "warning: ..."
    void error(std::string_view text) const;   // "error: ..."
    void trace(std::string_view text) const;   // only with --verbose

    // A line that replaces itself on a terminal and is not printed elsewhere; an empty text removes it.
    void progress(std::string_view text) const;

    [[nodiscard]] bool isVerbose() const { return verbose; }
    [[nodiscard]] bool canAsk() const; // stdin and stderr are a terminal
    // Asks on the terminal; anything but "y" or "yes" is no. Only if canAsk().
    [[nodiscard]] bool confirm(std::string_view question) const;

private:
    void line(std::string_view label, std::string_view colour, std::string_view said) const;

    bool quiet;
    bool verbose;
    bool terminal;
    bool coloured;
};
