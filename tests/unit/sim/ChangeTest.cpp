// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Change.h"

#include "sim/uci/ConfigParser.h"
#include "sim/uci/ConfigWriter.h"

#include <gtest/gtest.h>

namespace
{

std::string changed(const std::string& text, const Change& change)
{
    Package package = parseConfig("c", text);
    change.applyTo(package);
    return writeConfig(package);
}

TEST(ChangeTest, SettingAnOptionKeepsItsPlace)
{
    EXPECT_EQ(changed("config t s; option a 1; option b 2", {Change::Kind::set, "s", "a", "3"}),
              "\nconfig t 's'\n\toption a '3'\n\toption b '2'\n\n");
}

TEST(ChangeTest, SettingAListMakesItASingleValue)
{
    EXPECT_EQ(changed("config t s; list a 1; list a 2", {Change::Kind::set, "s", "a", "3"}),
              "\nconfig t 's'\n\toption a '3'\n\n");
}

TEST(ChangeTest, SettingTheTypeOfANewNameMakesASection)
{
    EXPECT_EQ(changed("", {Change::Kind::set, "s", "", "t"}), "\nconfig t 's'\n\n");
}

TEST(ChangeTest, RemovingASectionRemovesItsOptions)
{
    EXPECT_EQ(changed("config t s; option a 1", {Change::Kind::remove, "s", "", ""}), "\n");
}

TEST(ChangeTest, RemovingWhatIsGoneChangesNothing)
{
    EXPECT_EQ(changed("config t s", {Change::Kind::remove, "x", "a", ""}), "\nconfig t 's'\n\n");
}

TEST(ChangeTest, AKeptChangeIsReadAsItWas)
{
    const Change change{Change::Kind::set, "s", "o", "it's\ntwo lines"};
    const auto read = parseChanges("c", change.describe("c") + "\n").changes;
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].value, change.value);
}

TEST(ChangeTest, AKeptRemovalIsReadAsARemoval)
{
    EXPECT_EQ(parseChanges("c", "-c.s.o\n").changes.at(0).kind, Change::Kind::remove);
}

TEST(ChangeTest, NonsenseInTheStoreIsLeftOutAndNoticed)
{
    const StagedChanges read = parseChanges("c", "rubbish\nc.s.o='1'\n-c.s.o=1\nc.@t[0]='u'\nd.s.o='1'\n");
    EXPECT_EQ(read.changes.size(), 1U);
    EXPECT_TRUE(read.hasNonsense);
}

TEST(ChangeTest, AnOpenQuoteInTheStoreIsNonsense)
{
    EXPECT_TRUE(parseChanges("c", "c.s.o='1\n").hasNonsense);
}

TEST(ChangeTest, ATypeOfTheSameLengthLeavesASectionWithoutAName)
{
    EXPECT_EQ(changed("config system", {Change::Kind::set, "cfg01e48a", "", "sistem"}), "\nconfig sistem\n\n");
}

TEST(ChangeTest, ATypeOfAnotherLengthGivesASectionItsMadeUpName)
{
    EXPECT_EQ(changed("config system", {Change::Kind::set, "cfg01e48a", "", "t"}), "\nconfig t 'cfg01e48a'\n\n");
}

TEST(ChangeTest, WithoutItsSectionAChangeFindsNoPlace)
{
    Package package = parseConfig("c", "config t s");
    EXPECT_FALSE((Change{Change::Kind::set, "x", "a", "1"}.applyTo(package)));
    EXPECT_FALSE((Change{Change::Kind::remove, "s", "a", ""}.applyTo(package)));
    EXPECT_TRUE((Change{Change::Kind::set, "s", "a", "1"}.applyTo(package)));
}

} // namespace
