// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/ConfigWriter.h"

#include "sim/uci/ConfigParser.h"

#include <gtest/gtest.h>

namespace
{

TEST(ConfigWriterTest, WritesSectionsOptionsAndListsInTheUsualForm)
{
    const Package package = parseConfig("test", "config t s; option a 1; list b x; list b y; config u");
    EXPECT_EQ(writeConfig(package), "\nconfig t 's'\n"
                                    "\toption a '1'\n"
                                    "\tlist b 'x'\n"
                                    "\tlist b 'y'\n"
                                    "\nconfig u\n"
                                    "\n");
}

TEST(ConfigWriterTest, AQuoteInAValueSurvives)
{
    EXPECT_EQ(quoted("it's"), R"('it'\''s')");
}

TEST(ConfigWriterTest, WhatItWritesReadsAsTheSame)
{
    const std::string text = "\nconfig t 's'\n\toption a 'x '\\'' \" \\ # ;\ny'\n\n";
    EXPECT_EQ(writeConfig(parseConfig("test", text)), text);
}

} // namespace
