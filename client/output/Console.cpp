// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Console.h"

#include "client/output/Printable.h"

#include <cstdio>
#include <cstdlib>
#include <fmt/core.h>
#include <unistd.h>

namespace
{

constexpr std::string_view eraseLine = "\r\x1b[K";

bool wantsNoColour()
{
    const char* noColor = std::getenv("NO_COLOR");
    return noColor != nullptr && *noColor != '\0';
}

} // namespace

Console::Console(bool isQuiet, bool isVerbose)
    : quiet(isQuiet), verbose(isVerbose), terminal(::isatty(STDERR_FILENO) == 1), coloured(terminal && !wantsNoColour())
{
}

void Console::line(std::string_view label, std::string_view colour, std::string_view said) const
{
    const std::string text = printableLines(said);
    std::fflush(stdout); // keeps the order when both go to one place
    if (coloured && !colour.empty()) {
        fmt::print(stderr, "{}{}{}\x1b[0m{}\n", terminal ? eraseLine : "", colour, label, text);
    } else {
        fmt::print(stderr, "{}{}{}\n", terminal ? eraseLine : "", label, text);
    }
}

void Console::note(std::string_view text) const
{
    if (!quiet) {
        line("", "", text);
    }
}

void Console::warning(std::string_view text) const
{
    line("warning: ", "\x1b[33m", text);
}

void Console::error(std::string_view text) const
{
    line("error: ", "\x1b[31m", text);
}

void Console::trace(std::string_view text) const
{
    if (verbose) {
        line("", "", text);
    }
}

void Console::progress(std::string_view text) const
{
    if (terminal && !quiet) {
        fmt::print(stderr, "{}{}", eraseLine, text);
        std::fflush(stderr);
    }
}

bool Console::canAsk() const
{
    return terminal && ::isatty(STDIN_FILENO) == 1;
}

bool Console::confirm(std::string_view question) const
{
    fmt::print(stderr, "{} [y/N] ", question);
    std::string answer;
    for (int letter = std::getchar(); letter != EOF && letter != '\n'; letter = std::getchar()) {
        answer += static_cast<char>(letter);
    }
    return answer == "y" || answer == "Y" || answer == "yes";
}
