// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Printable.h"

#include "client/output/Console.h"
#include "client/output/Writer.h"

#include <gtest/gtest.h>

namespace
{

TEST(PrintableTest, ShowsControlCharactersAsNumbers)
{
    EXPECT_EQ(printable("\x1b[31mred\n"), "\\x1b[31mred\\x0a");
    EXPECT_EQ(printable(" ~\x7f"), " ~\\x7f");
}

TEST(PrintableTest, LooksAtAllThatFollowsThePlainStart)
{
    EXPECT_EQ(printable("plain"), "plain");
    EXPECT_EQ(printable("plain\ta\rb"), "plain\\x09a\\x0db");
}

TEST(PrintableTest, LeavesOtherLettersAsTheyAre)
{
    const std::string text = "r\u00fcck \u20ac \u202f \U0001f600 \u00a0";
    EXPECT_EQ(printable(text), text);
}

TEST(PrintableTest, ShowsControlCharactersBeyondAsciiAsNumbers)
{
    EXPECT_EQ(printable("\u0080 \u009b2J \u009f"), "\\xc2\\x80 \\xc2\\x9b2J \\xc2\\x9f");
}

TEST(PrintableTest, ShowsWhatTurnsTheDirectionOfReadingAsNumbers)
{
    EXPECT_EQ(printable("\u200e\u202e"), "\\xe2\\x80\\x8e\\xe2\\x80\\xae");
    EXPECT_EQ(printable("\u2066\u2069"), "\\xe2\\x81\\xa6\\xe2\\x81\\xa9");
    EXPECT_EQ(printable("\u061c"), "\\xd8\\x9c");
}

TEST(PrintableTest, ShowsSeparatorsOfLinesAndParagraphsAsNumbers)
{
    EXPECT_EQ(printable("\u2028\u2029"), "\\xe2\\x80\\xa8\\xe2\\x80\\xa9");
}

TEST(PrintableTest, ShowsWhatIsNoUtf8AsNumbers)
{
    EXPECT_EQ(printable("a\x9b"
                        "b"),
              "a\\x9bb");                           // nothing before it
    EXPECT_EQ(printable("\xe2\x82"), "\\xe2\\x82"); // cut
    EXPECT_EQ(printable("\xc2"
                        "a"),
              "\\xc2"
              "a");                                                   // broken off
    EXPECT_EQ(printable("\xc0\x9b"), "\\xc0\\x9b");                   // an escape in more bytes than it takes
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");          // half a pair
    EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80"); // beyond the last code
    EXPECT_EQ(printable("\xff"), "\\xff");
}

TEST(PrintableTest, LeavesTheEndsOfLinesInATextOfSeveral)
{
    EXPECT_EQ(printableLines("a\x1b\nb\n\rc"), "a\\x1b\nb\n\\x0dc");
}

TEST(PrintableTest, IsCutAtTheEndOfACharacter)
{
    EXPECT_EQ(cutTo("abcdef", 6), "abcdef");
    EXPECT_EQ(cutTo("abcdefg", 6), "abc...");
    EXPECT_EQ(cutTo("\u00e4\u00f6\u00fc\u00df", 4), "\u00e4\u00f6\u00fc\u00df");
    EXPECT_EQ(cutTo("a\u00e4\u00f6\u00fc\u00dfb", 5), "a\u00e4...");
    EXPECT_EQ(cutTo("abcd", 2), "..");
    EXPECT_EQ(cutTo("abcd", 0), "");
}

TEST(PrintableTest, IsAsWideAsItsLettersAreOnATerminal)
{
    EXPECT_EQ(columnsOf(""), 0U);
    EXPECT_EQ(columnsOf("abc"), 3U);
    EXPECT_EQ(columnsOf("a\u00e4\u20ac"), 3U);
    EXPECT_EQ(columnsOf("\u4e2d\u6587"), 4U);
    EXPECT_EQ(columnsOf("\U0001F600!"), 3U);
    EXPECT_EQ(cutTo("\u4e2d\u6587\u4e2d", 5), "\u4e2d...");
}

TEST(ConsoleTest, LetsNoControlCharacterThrough)
{
    testing::internal::CaptureStderr();
    Console(false, false).note("card1: \x1b[2J");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "card1: \\x1b[2J\n");
}

TEST(JsonTest, HasNothingOutsideAscii)
{
    Result result;
    result.add("text", "\u009b \u202e \x9b");
    const std::unique_ptr<Writer> writer = makeJsonLinesWriter();
    testing::internal::CaptureStdout();
    writer->add(result);
    const std::string line = testing::internal::GetCapturedStdout();
    EXPECT_NE(line.find(R"("\u009b \u202e \ufffd")"), std::string::npos) << line;
}

} // namespace
