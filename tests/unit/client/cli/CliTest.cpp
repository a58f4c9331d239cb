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

std::string complaintAbout(const std::vector<const char*>& words)
{
    CommandLine line;
    try {
        parse(line, words);
    } catch (const Failure& failure) {
        return failure.hint;
    }
    return {};
}

TEST(CommandLine, NamesTheCommandsWhenNoneIsGiven)
{
    EXPECT_EQ(complaintAbout({"time"}), "no command is given; the commands of time are get, set");
}

TEST(CommandLine, NamesTheWordThatIsNoCommand)
{
    EXPECT_EQ(complaintAbout({"time", "nonsense"}),
              "there is no command \"nonsense\"; the commands of time are get, set");
    EXPECT_TRUE(complaintAbout({"nonsense"}).starts_with("there is no command \"nonsense\"; the commands are "));
}

TEST(CommandLine, KeepsTheNameOfACommandWithWrongWords)
{
    CommandLine line;
    EXPECT_THROW(parse(line, {"time", "get", "--nonsense", "card1"}), Failure);
    EXPECT_EQ(line.commandName, "time get");
}

TEST(CommandLine, TellsTheVersion)
{
    CommandLine line;
    parse(line, {"--version"});
    EXPECT_TRUE(line.text.starts_with("tarvelctl "));
    EXPECT_FALSE(line.command);
}

TEST(CommandTable, NamesEachCommandOnce)
{
    std::set<std::string_view> names;
    for (const CommandRow& row : commandTable()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
    }
}

} // namespace
