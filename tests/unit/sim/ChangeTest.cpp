// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/Change.h"

#include <gtest/gtest.h>

#include "sim/uci/ConfigParser.h"
#include "sim/uci/ConfigWriter.h"

namespace
{

std::string changed(const std::string& text, const Change& change)
{
    Package package = parseConfig("c", text);
    change.applyTo(package);
    return writeConfig(package);
}

TEST(Change, settingAnOptionKeepsItsPlace)
{
    EXPECT_EQ(changed("config t s; option a 1; option b 2", {Change::Kind::set, "s", "a", "3"}),
              "\nconfig t 's'\n\toption a '3'\n\toption b '2'\n\n");
}

TEST(Change, settingAListMakesItASingleValue)
{
    EXPECT_EQ(changed("config t s; list a 1; list a 2", {Change::Kind::set, "s", "a", "3"}),
              "\nconfig t 's'\n\toption a '3'\n\n");
}

TEST(Change, settingTheTypeOfANewNameMakesASection)
{
    EXPECT_EQ(changed("", {Change::Kind::set, "s", "", "t"}), "\nconfig t 's'\n\n");
}

TEST(Change, removingASectionRemovesItsOptions)
{
    EXPECT_EQ(changed("config t s; option a 1", {Change::Kind::remove, "s", "", ""}), "\n");
}

TEST(Change, removingWhatIsGoneChangesNothing)
{
    EXPECT_EQ(changed("config t s", {Change::Kind::remove, "x", "a", ""}), "\nconfig t 's'\n\n");
}

TEST(Change, aKeptChangeIsReadAsItWas)
{
    const Change change{Change::Kind::set, "s", "o", "it's\ntwo lines"};
    const auto read = parseChanges(change.describe("c") + "\n");
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].value, change.value);
}

TEST(Change, aKeptRemovalIsReadAsARemoval)
{
    EXPECT_EQ(parseChanges("-c.s.o\n").at(0).kind, Change::Kind::remove);
}

TEST(Change, nonsenseInTheStoreIsLeftOut)
{
    EXPECT_EQ(parseChanges("rubbish\nc.s.o='1'\n-c.s.o=1\n").size(), 1U);
}

} // namespace
