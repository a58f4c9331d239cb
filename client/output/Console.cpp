// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Console.h"

#include "client/output/Printable.h"
#include "client/output/Streams.h"

#include <cstdio>
#include <cstdlib>
#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr std::string_view eraseLine = "\r\x1b[K";

std::size_t terminalWidth()
{
    constexpr std::size_t usual = 80;
    winsize size = {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

bool wantsNoColour()
{
    const char* noColor = std::getenv("NO_COLOR");
    // Set to nothing it counts as not set: that is the convention.
    return noColor != nullptr && *noColor != '\0';
}

} // namespace

Console::Console(bool isQuiet, bool isVerbose)
    : quiet(isQuiet), verbose(isVerbose), terminal(::isatty(STDERR_FILENO) == 1), coloured(terminal && !wantsNoColour())
{
}

void Console::line(std::string_view label, std::string_view colour, std::string_view text) const
{
    std::fflush(stdout); // keeps the order when both go to one place
    if (coloured && !colour.empty()) {
        // On a terminal the progress may stand in this line.
        writeMessage(fmt::format("{}{}{}\x1b[0m{}\n", terminal ? eraseLine : "", colour, label, text));
    } else {
        writeMessage(fmt::format("{}{}{}\n", terminal ? eraseLine : "", label, text));
    }
}

void Console::note(std::string_view text) const
{
    if (!quiet) {
        line("", "", printable(text));
    }
}

void Console::warning(std::string_view text) const
{
    line("warning: ", "\x1b[33m", printable(text));
}

void Console::error(std::string_view text) const
{
    line("error: ", "\x1b[31m", printableLines(text));
}

void Console::trace(std::string_view text) const
{
    if (verbose) {
        line("", "", printableLines(text));
    }
}

void Console::progress(const std::string& label, Progress progress)
{
    board.tell(label, std::move(progress), std::chrono::steady_clock::now());
}

void Console::finishJob(const std::string& label)
{
    board.finish(label);
    eraseProgress();
}

void Console::forgetJob(const std::string& label)
{
    board.forget(label);
    eraseProgress();
}

// One column stays free: some terminals begin a new line as soon as the last is filled.
void Console::drawProgress() const
{
    const std::string text = printable(board.text(std::chrono::steady_clock::now()));
    if (showsProgress() && !text.empty()) {
        writeMessage(fmt::format("{}{}", eraseLine, cutTo(text, terminalWidth() - 1)));
        std::fflush(stderr);
    }
}

void Console::eraseProgress() const
{
    if (showsProgress()) {
        writeMessage(eraseLine);
        std::fflush(stderr);
    }
}

bool Console::canAsk() const
{
    return terminal && ::isatty(STDIN_FILENO) == 1;
}

void Console::ask(std::string_view question) const
{
    eraseProgress();
    writeMessage(fmt::format("{} [y/N] ", printableLines(question)));
}

bool Console::isAnsweredYes()
{
    std::string answer;
    // The line to its end, so that nothing of it answers the next question.
    for (int letter = std::getchar(); letter != EOF && letter != '\n'; letter = std::getchar()) {
        answer += static_cast<char>(letter);
    }
    return answer == "y" || answer == "Y" || answer == "yes";
}
