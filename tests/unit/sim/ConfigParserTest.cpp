// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/ConfigParser.h"

#include "sim/uci/UciError.h"

#include <gtest/gtest.h>

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

TEST(ConfigParserTest, AnEmptyTextIsAPackageWithoutSections)
{
    EXPECT_TRUE(parseConfig("test", "").sections.empty());
}

TEST(ConfigParserTest, ReadsTypeAndNameOfASection)
{
    const Package package = parseConfig("test", "config interface 'lan'\n");
    EXPECT_EQ(package.sections.at(0).type, "interface");
    EXPECT_EQ(package.sections.at(0).name, "lan");
}

TEST(ConfigParserTest, ASectionWithoutNameIsAnonymous)
{
    EXPECT_TRUE(parseConfig("test", "config system\n").sections.at(0).anonymous);
}

TEST(ConfigParserTest, AnAnonymousSectionHasTheSameInternalNameAtEachReading)
{
    const std::string text = "config system\n\toption hostname 'a'\n";
    EXPECT_EQ(parseConfig("test", text).sections.at(0).name, parseConfig("test", text).sections.at(0).name);
}

TEST(ConfigParserTest, AnonymousSectionsAreToldApart)
{
    const Package package = parseConfig("test", "config t\nconfig t\n");
    EXPECT_NE(package.sections.at(0).name, package.sections.at(1).name);
}

TEST(ConfigParserTest, SectionsOfTheSameNameAreOne)
{
    const Package package = parseConfig("test", "config t 's'\n\toption a 1\nconfig t 's'\n\toption b 2\n");
    ASSERT_EQ(package.sections.size(), 1U);
    EXPECT_EQ(package.sections.at(0).options.size(), 2U);
}

TEST(ConfigParserTest, TheLaterOfTwoOptionsOfTheSameNameCounts)
{
    const Package package = parseConfig("test", "config t 's'\n\toption a 1\n\toption a 2\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, std::vector<std::string>{"2"});
}

TEST(ConfigParserTest, ListItemsKeepTheirOrder)
{
    const Package package = parseConfig("test", "config t 's'\n\tlist a 2\n\tlist a 1\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, (std::vector<std::string>{"2", "1"}));
}

TEST(ConfigParserTest, SingleQuotesProtectEverything)
{
    EXPECT_EQ(firstValue("'a \"b\" \\ # c'"), "a \"b\" \\ # c");
}

TEST(ConfigParserTest, DoubleQuotesProtectButForTheBackslash)
{
    EXPECT_EQ(firstValue(R"("a \"b\" 'c'")"), "a \"b\" 'c'");
}

TEST(ConfigParserTest, ABackslashOutsideOfQuotesProtectsOneCharacter)
{
    EXPECT_EQ(firstValue("a\\ b"), "a b");
}

TEST(ConfigParserTest, AdjacentPiecesAreOneWord)
{
    EXPECT_EQ(firstValue(R"('it'\''s'" me")"), "it's me");
}

TEST(ConfigParserTest, AQuotedValueMaySpanLines)
{
    EXPECT_EQ(firstValue("'a\nb'"), "a\nb");
}

TEST(ConfigParserTest, AnEmptyValueIsNone)
{
    EXPECT_TRUE(parseConfig("test", "config t 's'\n\toption o ''\n").sections.at(0).options.empty());
}

TEST(ConfigParserTest, AnEmptyValueLeavesAnEarlierOne)
{
    EXPECT_EQ(firstValue("a\n\toption o ''"), "a");
}

TEST(ConfigParserTest, AnEmptyItemIsAnItem)
{
    const Package package = parseConfig("test", "config t 's'\n\tlist a ''\n\tlist a b\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, (std::vector<std::string>{"", "b"}));
}

TEST(ConfigParserTest, AnEscapedLineEndJoinsTwoLines)
{
    EXPECT_EQ(firstValue("a\\\nb"), "ab");
}

TEST(ConfigParserTest, ACommentNeedsNoBlankBeforeIt)
{
    EXPECT_EQ(firstValue("a#b"), "a");
}

TEST(ConfigParserTest, ACommentEndsWithItsLine)
{
    EXPECT_EQ(parseConfig("test", "# config x\nconfig t 's' # more\n").sections.size(), 1U);
}

TEST(ConfigParserTest, ASemicolonEndsAStatement)
{
    EXPECT_EQ(parseConfig("test", "config t 's'; option a 1; option b 2").sections.at(0).options.size(), 2U);
}

TEST(ConfigParserTest, APackageLineIsAllowed)
{
    EXPECT_EQ(errorOf("package test\nconfig t\n"), "(no error)");
}

TEST(ConfigParserTest, AnOptionBeforeTheFirstSectionIsAnError)
{
    EXPECT_EQ(errorOf("option a 1\n"), "Parse error (option/list command found before the first section) at line 1");
}

TEST(ConfigParserTest, AnErrorNamesItsLine)
{
    EXPECT_EQ(errorOf("config t\n\n\toption 'a\nb' 1\n\n"), "Parse error (invalid character in name field) at line 3");
}

TEST(ConfigParserTest, AnUnknownStatementIsAnError)
{
    EXPECT_EQ(errorOf("konfig t\n"), "Parse error (invalid command) at line 1");
}

TEST(ConfigParserTest, AnOptionWithoutNameIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption\n"), "Parse error (insufficient arguments) at line 2");
}

TEST(ConfigParserTest, AnOptionWithoutValueHasAnEmptyOne)
{
    EXPECT_EQ(errorOf("config t\noption a\n"), "(no error)");
}

TEST(ConfigParserTest, AnOptionWithTwoValuesIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption a b c\n"), "Parse error (too many arguments) at line 2");
}

TEST(ConfigParserTest, AnOpenQuoteIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption a 'b\n"), "Parse error (EOF with unterminated ') at line 2");
}

} // namespace
