// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/output/ProgressBoard.h"

#include <cstddef>
#include <string>
#include <string_view>

// Everything that is not data: stderr. Colour only on a terminal and without NO_COLOR; data never has any.
class Console
{
public:
    Console(bool quiet, bool verbose);

    // One line, whatever a card says in it.
    void note(std::string_view text) const;    // silenced by --quiet
    void warning(std::string_view text) const; // "warning: ..."

    // Perhaps several lines.
    void error(std::string_view text) const; // "error: ..."
    void trace(std::string_view text) const; // only with --verbose

    // The state of jobs is one line that replaces itself, on a terminal only: somebody has to draw it now and then.
    void expectJobs(std::size_t number) { board.expect(number); }
    void progress(const std::string& label, Progress progress);
    void finishJob(const std::string& label);
    void forgetJob(const std::string& label); // one that is not counted
    [[nodiscard]] bool showsProgress() const { return terminal && !quiet; }
    void drawProgress() const;
    void eraseProgress() const; // before data goes to the same terminal

    [[nodiscard]] bool isVerbose() const { return verbose; }
    [[nodiscard]] bool canAsk() const; // stdin and stderr are a terminal
    // Only if canAsk(). The answer is the next line of stdin; anything but "y" or "yes" is no.
    void ask(std::string_view question) const;
    [[nodiscard]] static bool isAnsweredYes();

private:
    void line(std::string_view label, std::string_view colour, std::string_view text) const;

    bool quiet;
    bool verbose;
    bool terminal;
    bool coloured;
    ProgressBoard board;
};
