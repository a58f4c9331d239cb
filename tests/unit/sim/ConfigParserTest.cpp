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

TEST(ConfigParser, anEmptyTextIsAPackageWithoutSections)
{
    EXPECT_TRUE(parseConfig("test", "").sections.empty());
}

TEST(ConfigParser, readsTypeAndNameOfASection)
{
    const Package package = parseConfig("test", "config interface 'lan'\n");
    EXPECT_EQ(package.sections.at(0).type, "interface");
    EXPECT_EQ(package.sections.at(0).name, "lan");
}

TEST(ConfigParser, aSectionWithoutNameIsAnonymous)
{
    EXPECT_TRUE(parseConfig("test", "config system\n").sections.at(0).anonymous);
}

TEST(ConfigParser, anAnonymousSectionHasTheSameInternalNameAtEachReading)
{
    const std::string text = "config system\n\toption hostname 'a'\n";
    EXPECT_EQ(parseConfig("test", text).sections.at(0).name, parseConfig("test", text).sections.at(0).name);
}

TEST(ConfigParser, anonymousSectionsAreToldApart)
{
    const Package package = parseConfig("test", "config t\nconfig t\n");
    EXPECT_NE(package.sections.at(0).name, package.sections.at(1).name);
}

TEST(ConfigParser, sectionsOfTheSameNameAreOne)
{
    const Package package = parseConfig("test", "config t 's'\n\toption a 1\nconfig t 's'\n\toption b 2\n");
    ASSERT_EQ(package.sections.size(), 1U);
    EXPECT_EQ(package.sections.at(0).options.size(), 2U);
}

TEST(ConfigParser, theLaterOfTwoOptionsOfTheSameNameCounts)
{
    const Package package = parseConfig("test", "config t 's'\n\toption a 1\n\toption a 2\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, std::vector<std::string>{"2"});
}

TEST(ConfigParser, listItemsKeepTheirOrder)
{
    const Package package = parseConfig("test", "config t 's'\n\tlist a 2\n\tlist a 1\n");
    EXPECT_EQ(package.sections.at(0).find("a")->values, (std::vector<std::string>{"2", "1"}));
}

TEST(ConfigParser, singleQuotesProtectEverything)
{
    EXPECT_EQ(firstValue("'a \"b\" \\ # c'"), "a \"b\" \\ # c");
}

TEST(ConfigParser, doubleQuotesProtectButForTheBackslash)
{
    EXPECT_EQ(firstValue(R"("a \"b\" 'c'")"), "a \"b\" 'c'");
}

TEST(ConfigParser, aBackslashOutsideOfQuotesProtectsOneCharacter)
{
    EXPECT_EQ(firstValue("a\\ b"), "a b");
}

TEST(ConfigParser, adjacentPiecesAreOneWord)
{
    EXPECT_EQ(firstValue(R"('it'\''s'" me")"), "it's me");
}

TEST(ConfigParser, aQuotedValueMaySpanLines)
{
    EXPECT_EQ(firstValue("'a\nb'"), "a\nb");
}

TEST(ConfigParser, anEmptyValueIsAValue)
{
    EXPECT_EQ(firstValue("''"), "");
}

TEST(ConfigParser, aCommentEndsWithItsLine)
{
    EXPECT_EQ(parseConfig("test", "# config x\nconfig t 's' # more\n").sections.size(), 1U);
}

TEST(ConfigParser, aSemicolonEndsAStatement)
{
    EXPECT_EQ(parseConfig("test", "config t 's'; option a 1; option b 2").sections.at(0).options.size(), 2U);
}

TEST(ConfigParser, aPackageLineIsAllowed)
{
    EXPECT_EQ(errorOf("package test\nconfig t\n"), "(no error)");
}

TEST(ConfigParser, anOptionBeforeTheFirstSectionIsAnError)
{
    EXPECT_EQ(errorOf("option a 1\n"), "Parse error (option/list command found before the first section) at line 1");
}

TEST(ConfigParser, anErrorNamesItsLine)
{
    EXPECT_EQ(errorOf("config t\n\n\toption 'a\nb' 1\n\n"), "Parse error (invalid character in name field) at line 3");
}

TEST(ConfigParser, anUnknownStatementIsAnError)
{
    EXPECT_EQ(errorOf("konfig t\n"), "Parse error (invalid command) at line 1");
}

TEST(ConfigParser, anOptionWithoutValueIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption a\n"), "Parse error (insufficient arguments) at line 2");
}

TEST(ConfigParser, anOptionWithTwoValuesIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption a b c\n"), "Parse error (too many arguments) at line 2");
}

TEST(ConfigParser, anOpenQuoteIsAnError)
{
    EXPECT_EQ(errorOf("config t\noption a 'b\n"), "Parse error (unterminated quote) at line 2");
}

} // namespace
