// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/PrintableText.h"

#include <gtest/gtest.h>

TEST(PrintableTextTest, LettersOfAllLanguagesStay)
{
    EXPECT_EQ(printable("Größe 12 µs ~"), "Größe 12 µs ~");
}

TEST(PrintableTextTest, ALineEndBecomesAQuestionMark)
{
    EXPECT_EQ(printable("one\ntwo\r"), "one?two?");
}

TEST(PrintableTextTest, TheFirstAndTheLastControlCharactersOfAsciiBecomeQuestionMarks)
{
    EXPECT_EQ(printable(std::string_view("\0\x1F \x7F", 4)), "?? ?");
}

TEST(PrintableTextTest, AControlCharacterOfTwoBytesBecomesOneQuestionMark)
{
    EXPECT_EQ(printable("a\xC2\x80z\xC2\x9F"), "a?z?");
}

TEST(PrintableTextTest, TheCharactersBesideThoseOfTwoBytesStay)
{
    EXPECT_EQ(printable("\xC2\xA0\xC3\x80"), "\xC2\xA0\xC3\x80");
}

TEST(PrintableTextTest, HalfACharacterAtTheEndStays)
{
    EXPECT_EQ(printable("a\xC2"), "a\xC2");
}

TEST(PrintableTextTest, AnEmptyTextStaysEmpty)
{
    EXPECT_EQ(printable(""), "");
}
