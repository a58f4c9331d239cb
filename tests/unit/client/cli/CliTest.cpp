// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Cli.h"

#include "client/model/Failure.h"

#include <gtest/gtest.h>
#include <set>

namespace
{

void parse(CommandLine& line, std::vector<const char*> words)
{
    words.insert(words.begin(), "tarvelctl");
    parseCommandLine(static_cast<int>(words.size()), words.data(), line);
}

TEST(CommandLine, ChoosesACommandOfAGroup)
{
    CommandLine line;
    parse(line, {"time", "get", "card1"});
    EXPECT_EQ(line.commandName, "time get");
    EXPECT_TRUE(line.command);
}

TEST(CommandLine, TakesTheProgramsOptionsBeforeAndAfterTheCommand)
{
    CommandLine line;
    parse(line, {"-o", "json", "versions", "--timeout", "1.5", "card1"});
    EXPECT_EQ(line.options.output, "json");
    EXPECT_EQ(line.options.timeout, 1.5);
}

TEST(CommandLine, LeavesTargetsBehindAnInterfaceAlone)
{
    CommandLine line;
    parse(line, {"versions", "-i", "lan0", "card1"});
    EXPECT_EQ(line.options.interfaces, std::vector<std::string>{"lan0"});
}

TEST(CommandLine, IsRefusedWithAUsageFailure)
{
    const std::vector<std::vector<const char*>> wrong = {{},
                                                         {"nonsense"},
                                                         {"time"},
                                                         {"versions"},
                                                         {"versions", "--nonsense", "card1"},
                                                         {"-o", "xml", "versions", "card1"},
                                                         {"--parallel", "0", "versions", "card1"},
                                                         {"--timeout", "soon", "versions", "card1"}};
    for (const std::vector<const char*>& words : wrong) {
        CommandLine line;
        try {
            parse(line, words);
            ADD_FAILURE() << testing::PrintToString(words);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::usage);
        }
    }
}

TEST(CommandLine, TellsTheVersion)
{
    CommandLine line;
    parse(line, {"--version"});
    EXPECT_TRUE(line.text.starts_with("tarvelctl "));
    EXPECT_FALSE(line.command);
}

TEST(CommandTable, HasExamplesThatParse)
{
    for (const CommandRow& row : commandTable()) {
        EXPECT_NE(row.examples.find("tarvelctl "), std::string_view::npos) << row.name;
        CommandLine line;
        std::vector<std::string> words;
        parse(line, {"--help"});
        EXPECT_NE(line.text.find(row.name.substr(0, row.name.find(' '))), std::string::npos) << row.name;
    }
}

TEST(CommandTable, NamesEachCommandOnce)
{
    std::set<std::string_view> names;
    for (const CommandRow& row : commandTable()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
    }
}

} // namespace
