// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/ConfigParser.h"

#include <gtest/gtest.h>

#include "sim/uci/UciError.h"

namespace
{

std::string errorOf(const std::string& text)
{
    try {
        parseConfig("test", text);
    } catch (const UciError& error) {
        return error.what();
    }
    return "(no error)";
}

std::string firstValue(const std::string& text)
{
    return parseConfig("test", "config t 's'\n\toption o " + text + "\n").sections.at(0).options.at(0).values.at(0);
}

TEST(ConfigParser, AnEmptyTextIsAPackageWithoutSections)
{
    EXPECT_TRUE(parseConfig("test", "").sections.empty());
}

TEST(ConfigParser, ReadsTypeAndNameOfASection)
{
    const Package package = parseConfig("test", "config interface 'lan'\n");
    EXPECT_EQ(package.sections.at(0).type, "interface");
    EXPECT_EQ(package.sections.at(0).name, "lan");
}

TEST(ConfigParser, ASectionWithoutNameIsAnonymous)
{
    EXPECT_TRUE(parseConfig("test", "config system\n").sections.at(0).anonymous);
}

TEST(ConfigParser, AnAnonymousSectionHasTheSameInternalNameAtEachReading)
{
    const std::string text = "config system\n\toption hostname 'a'\n";
    EXPECT_EQ(parseConfig("test", text).sections.at(0).name, parseConfig("test", text).sections.at(0).name);
}

TEST(ConfigParser, AnonymousSectionsAreToldApart)
{
    const Package package = parseConfig("test", "config t\nconfig t\n");
    EXPECT_NE(package.sections.at(0).name, package.sections.at(1).name);
}

TEST(ConfigParser, SectionsOfTheSameNameAreOne)
{
    const Package package = parseConfig("test", "config t 's'\n\toption a 1\nconfig t 's'\n\toption b 2\n");
    ASSERT_EQ(package.sections.size(), 1U);
    EXPECT_EQ(package.sections.at(0).options.size(), 2U);
}

TEST(ConfigParser, TheLaterOfTwoOptionsOfTheSameNameCounts)
{
    const Package package = parseConfig("test", "config t 's'\n\toption a 1\n\toption a 2\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, std::vector<std::string>{"2"});
}

TEST(ConfigParser, ListItemsKeepTheirOrder)
{
    const Package package = parseConfig("test", "config t 's'\n\tlist a 2\n\tlist a 1\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, (std::vector<std::string>{"2", "1"}));
}

TEST(ConfigParser, SingleQuotesProtectEverything)
{
    EXPECT_EQ(firstValue("'a \"b\" \\ # c'"), "a \"b\" \\ # c");
}

TEST(ConfigParser, DoubleQuotesProtectButForTheBackslash)
{
    EXPECT_EQ(firstValue(R"("a \"b\" 'c'")"), "a \"b\" 'c'");
}

TEST(ConfigParser, ABackslashOutsideOfQuotesProtectsOneCharacter)
{
    EXPECT_EQ(firstValue("a\\ b"), "a b");
}

TEST(ConfigParser, AdjacentPiecesAreOneWord)
{
    EXPECT_EQ(firstValue(R"('it'\''s'" me")"), "it's me");
}

TEST(ConfigParser, AQuotedValueMaySpanLines)
{
    EXPECT_EQ(firstValue("'a\nb'"), "a\nb");
}

TEST(ConfigParser, AnEmptyValueIsNone)
{
    EXPECT_TRUE(parseConfig("test", "config t 's'\n\toption o ''\n").sections.at(0).options.empty());
}

TEST(ConfigParser, AnEmptyValueLeavesAnEarlierOne)
{
    EXPECT_EQ(firstValue("a\n\toption o ''"), "a");
}

TEST(ConfigParser, AnEmptyItemIsAnItem)
{
    const Package package = parseConfig("test", "config t 's'\n\tlist a ''\n\tlist a b\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, (std::vector<std::string>{"", "b"}));
}

TEST(ConfigParser, AnEscapedLineEndJoinsTwoLines)
{
    EXPECT_EQ(firstValue("a\\\nb"), "ab");
}

TEST(ConfigParser, ACommentNeedsNoBlankBeforeIt)
{
    EXPECT_EQ(firstValue("a#b"), "a");
}

TEST(ConfigParser, ACommentEndsWithItsLine)
{
    EXPECT_EQ(parseConfig("test", "# config x\nconfig t 's' # more\n").sections.size(), 1U);
}

TEST(ConfigParser, ASemicolonEndsAStatement)
{
    EXPECT_EQ(parseConfig("test", "config t 's'; option a 1; option b 2").sections.at(0).options.size(), 2U);
}

TEST(ConfigParser, APackageLineIsAllowed)
{
    EXPECT_EQ(errorOf("package test\nconfig t\n"), "(no error)");
}

TEST(ConfigParser, AnOptionBeforeTheFirstSectionIsAnError)
{
    EXPECT_EQ(errorOf("option a 1\n"), "Parse error (option/list command found before the first section) at line 1");
}

TEST(ConfigParser, AnErrorNamesItsLine)
{
    EXPECT_EQ(errorOf("config t\n\n\toption 'a\nb' 1\n\n"), "Parse error (invalid character in name field) at line 3");
}

TEST(ConfigParser, AnUnknownStatementIsAnError)
{
    EXPECT_EQ(errorOf("konfig t\n"), "Parse error (invalid command) at line 1");
}

TEST(ConfigParser, AnOptionWithoutNameIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption\n"), "Parse error (insufficient arguments) at line 2");
}

TEST(ConfigParser, AnOptionWithoutValueHasAnEmptyOne)
{
    EXPECT_EQ(errorOf("config t\noption a\n"), "(no error)");
}

TEST(ConfigParser, AnOptionWithTwoValuesIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption a b c\n"), "Parse error (too many arguments) at line 2");
}

TEST(ConfigParser, AnOpenQuoteIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption a 'b\n"), "Parse error (EOF with unterminated ') at line 2");
}

} // namespace
