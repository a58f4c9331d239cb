// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Console.h"

#include "client/engine/Descriptor.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

namespace
{

// Everything that a console can say, once.
void sayAll(Console console)
{
    console.note("a note");
    console.warning("a warning");
    console.error("two\nlines");
    console.progress("card1", {"sending", "50 %"});
    console.drawProgress();
    console.trace("bytes");
}

std::string said(bool quiet, bool verbose)
{
    testing::internal::CaptureStderr();
    sayAll(Console(quiet, verbose));
    return testing::internal::GetCapturedStderr();
}

TEST(ConsoleTest, SaysAllButTracesAndProgress)
{
    EXPECT_EQ(said(false, false), "a note\nwarning: a warning\nerror: two\nlines\n");
}

TEST(ConsoleTest, LeavesOutNotesWhenQuiet)
{
    EXPECT_EQ(said(true, false), "warning: a warning\nerror: two\nlines\n");
}

TEST(ConsoleTest, SaysTracesWhenVerbose)
{
    EXPECT_EQ(said(false, true), "a note\nwarning: a warning\nerror: two\nlines\nbytes\n");
}

TEST(ConsoleTest, ShowsWhatCouldSteerATerminalAsText)
{
    testing::internal::CaptureStderr();
    Console(false, false).note("a\x1b[31mb");
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_EQ(text.front(), 'a');
}

TEST(ConsoleTest, ANoteAndAWarningStayOneLine)
{
    testing::internal::CaptureStderr();
    const Console console(false, false);
    console.note("a\nb");
    console.warning("c\nd");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a\\x0ab\nwarning: c\\x0ad\n");
}

TEST(ConsoleTest, CannotAskWithoutATerminal)
{
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Console(false, false).canAsk());
    testing::internal::GetCapturedStderr();
}

// Standard error is a terminal, until the end of the test.
class TerminalTest : public testing::Test
{
protected:
    TerminalTest()
    {
        ::unsetenv("NO_COLOR");
        ::grantpt(terminal.get());
        ::unlockpt(terminal.get());
        const Descriptor user(::open(::ptsname(terminal.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
        termios raw = {};
        ::tcgetattr(user.get(), &raw);
        ::cfmakeraw(&raw); // no carriage return before each newline
        ::tcsetattr(user.get(), TCSANOW, &raw);
        ::dup2(user.get(), STDERR_FILENO);
    }

    ~TerminalTest() override { ::dup2(kept.get(), STDERR_FILENO); }

    // All that was shown. The kernel hands it over piece by piece, so that there is an end only when the user has gone.
    [[nodiscard]] std::string shown() const
    {
        ::dup2(kept.get(), STDERR_FILENO);
        std::string text;
        std::array<char, 1000> piece = {};
        for (ssize_t size = 0; (size = ::read(terminal.get(), piece.data(), piece.size())) > 0;) {
            text.append(piece.data(), static_cast<std::size_t>(size));
        }
        return text;
    }

    Descriptor kept{::dup(STDERR_FILENO)};
    Descriptor terminal{::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
};

TEST_F(TerminalTest, HasColoursAndALineThatReplacesItself)
{
    sayAll(Console(false, false));
    const std::string text = shown();
    const std::string upToTheSeconds = "\r\x1b[Ka note\n"
                                       "\r\x1b[K\x1b[33mwarning: \x1b[0ma warning\n"
                                       "\r\x1b[K\x1b[31merror: \x1b[0mtwo\nlines\n"
                                       "\r\x1b[Kcard1: sending ";
    EXPECT_EQ(text.substr(0, upToTheSeconds.size()), upToTheSeconds);
    EXPECT_TRUE(text.ends_with(" s, 50 %")) << text;
}

TEST_F(TerminalTest, HasNoColoursIfTheUserWantsNone)
{
    ::setenv("NO_COLOR", "1", 1);
    Console(false, false).warning("a warning");
    ::unsetenv("NO_COLOR");
    EXPECT_EQ(shown(), "\r\x1b[Kwarning: a warning\n");
}

TEST_F(TerminalTest, HasNoProgressWhenQuiet)
{
    Console console(true, false);
    console.progress("card1", {"sending", "50 %"});
    console.drawProgress();
    console.error("end");
    EXPECT_EQ(shown(), "\r\x1b[K\x1b[31merror: \x1b[0mend\n");
}

// What is typed on standard input, and whether that is a yes.
bool isYes(const char* typed)
{
    std::array<int, 2> ends = {};
    EXPECT_EQ(::pipe(ends.data()), 0);
    const Descriptor kept(::dup(STDIN_FILENO));
    const Descriptor reading(ends[0]);
    {
        const Descriptor writing(ends[1]);
        EXPECT_GT(::write(writing.get(), typed, std::string_view(typed).size()), 0);
    }
    ::dup2(reading.get(), STDIN_FILENO);
    testing::internal::CaptureStderr();
    Console(false, false).ask("Go on?");
    const bool yes = Console::isAnsweredYes();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Go on? [y/N] ");
    ::dup2(kept.get(), STDIN_FILENO);
    std::clearerr(stdin);
    return yes;
}

TEST(ConfirmationTest, TakesNothingButAYes)
{
    for (const char* yes : {"y\n", "Y\n", "yes\n", "yes"}) {
        EXPECT_TRUE(isYes(yes)) << yes;
    }
    for (const char* no : {"n\n", "\n", "yep\n", "no, y\n"}) {
        EXPECT_FALSE(isYes(no)) << no;
    }
}

} // namespace
