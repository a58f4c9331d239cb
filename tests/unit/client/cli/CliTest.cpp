// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Cli.h"

#include "client/model/Failure.h"
#include "client/model/Remedy.h"
#include "unit/client/FailureOf.h"

#include <algorithm>
#include <fmt/core.h>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

namespace
{

void parse(CommandLine& line, std::vector<const char*> words)
{
    words.insert(words.begin(), "tarvelctl");
    parseCommandLine(static_cast<int>(words.size()), words.data(), line);
}

TEST(CommandLineTest, ChoosesACommandOfAGroup)
{
    CommandLine line;
    parse(line, {"time", "get", "card1"});
    EXPECT_EQ(line.commandName, "time get");
    EXPECT_TRUE(line.command);
}

TEST(CommandLineTest, TakesTheProgramsOptionsBeforeAndAfterTheCommand)
{
    CommandLine line;
    parse(line, {"-o", "json", "versions", "--timeout", "1.5", "card1"});
    EXPECT_EQ(line.options.output, "json");
    EXPECT_EQ(line.options.timeout, 1.5);
}

TEST(CommandLineTest, TellsAllThatIsGoneOverByAnOption)
{
    CommandLine line;
    parse(line, {"--help"});
    std::string text; // without the breaks of lines
    for (const char letter : line.text) {
        if (letter != ' ' && letter != '\n') {
            text += letter;
        }
    }
    for (const char* told : {"cannotbeundone,andasknothing", "anaddressmaybetaken", "oracardhasit"}) {
        EXPECT_NE(text.find(told), std::string::npos) << told;
    }
}

TEST(CommandLineTest, LeavesTargetsBehindAnInterfaceAlone)
{
    CommandLine line;
    parse(line, {"versions", "-i", "lan0", "card1"});
    EXPECT_EQ(line.options.interfaces, std::vector<std::string>{"lan0"});
}

TEST(CommandLineTest, TakesATargetThatIsCalledLikeACommand)
{
    CommandLine line;
    parse(line, {"time", "get", "ip", "set"});
    EXPECT_EQ(line.commandName, "time get");
}

TEST(CommandLineTest, IsRefusedWithAUsageFailure)
{
    const std::vector<std::vector<const char*>> wrong = {{},
                                                         {"nonsense"},
                                                         {"time"},
                                                         {"versions"},
                                                         {"versions", "--nonsense", "card1"},
                                                         {"-o", "xml", "versions", "card1"},
                                                         {"--parallel", "0", "versions", "card1"},
                                                         {"--timeout", "nan", "versions", "card1"},
                                                         {"--timeout", "-NaN", "versions", "card1"},
                                                         {"reboot", "--wait-time", "nan", "card1"},
                                                         {"--timeout", "soon", "versions", "card1"},
                                                         {"-i", "", "versions", "card1"},
                                                         {"--interface", "", "versions", "card1"}};
    for (const std::vector<const char*>& words : wrong) {
        CommandLine line;
        EXPECT_EQ(failureOf([&] { parse(line, words); }).code, ExitCode::usage) << testing::PrintToString(words);
    }
}

std::string complaintAbout(const std::vector<const char*>& words)
{
    CommandLine line;
    return failureOf([&] { parse(line, words); }).hint;
}

TEST(CommandLineTest, NamesTheCommandsWhenNoneIsGiven)
{
    EXPECT_EQ(complaintAbout({"time"}), "no command is given; the commands of time are get, set");
}

TEST(CommandLineTest, NamesTheWordThatIsNoCommand)
{
    EXPECT_EQ(complaintAbout({"time", "nonsense"}),
              "there is no command \"nonsense\"; the commands of time are get, set");
    EXPECT_TRUE(complaintAbout({"nonsense"}).starts_with("there is no command \"nonsense\"; the commands are "));
}

TEST(CommandLineTest, KeepsTheNameOfACommandWithWrongWords)
{
    CommandLine line;
    EXPECT_THROW(parse(line, {"time", "get", "--nonsense", "card1"}), Failure);
    EXPECT_EQ(line.commandName, "time get");
}

TEST(CommandLineTest, TellsTheVersion)
{
    const std::vector<std::vector<const char*>> ways = {{"--version"}, {"-V"}, {"-q", "--version"}, {"versions", "-V"}};
    for (const std::vector<const char*>& words : ways) {
        CommandLine line;
        parse(line, words);
        EXPECT_TRUE(line.text.starts_with("tarvelctl ")) << testing::PrintToString(words);
        EXPECT_TRUE(line.text.ends_with("\n")) << testing::PrintToString(words);
        EXPECT_FALSE(line.command);
    }
}

TEST(CommandLineTest, TakesAnotherWordForNoQuestionForTheVersion)
{
    CommandLine line;
    EXPECT_THROW(parse(line, {"-v"}), Failure);
    EXPECT_TRUE(line.text.empty());
}

// It would be all cards at once.
TEST(CommandLineTest, TakesNoBatchesOfNoCards)
{
    CommandLine line;
    parse(line, {"firmware", "upgrade", "--batch", "1", "firmware.tar.gz", "card1"});
    EXPECT_THROW(parse(line, {"firmware", "upgrade", "--batch", "0", "firmware.tar.gz", "card1"}), Failure);
}

TEST(CommandLineTest, ListsEveryExitStatusInItsHelp)
{
    CommandLine line;
    parse(line, {"--help"});
    for (const ExitStatus& status : exitStatuses()) {
        EXPECT_NE(line.text.find(fmt::format("\n  {:<5}{}", static_cast<int>(status.code), status.meaning)),
                  std::string::npos)
            << status.meaning;
    }
}

// Such as "--force", or "tarvelctl time get": what a failure tells people to type is there to be typed.
TEST(CommandLineTest, KnowsEveryRemedyThatAFailureNames)
{
    CommandLine line;
    parse(line, {"--help"});
    std::ranges::replace(line.text, ',', ' ');
    std::istringstream help(line.text);
    std::set<std::string> known{std::istream_iterator<std::string>(help), {}};
    for (const CommandRow& row : commandTable()) {
        known.insert(fmt::format("tarvelctl {}", row.name));
    }
    for (int number = 0; number <= static_cast<int>(Remedy::rescueAddress); ++number) {
        const std::string word(wordOf(static_cast<Remedy>(number)));
        EXPECT_TRUE(known.contains(word)) << number << " " << word;
    }
}

TEST(CommandTableTest, NamesEachCommandOnce)
{
    std::set<std::string_view> names;
    for (const CommandRow& row : commandTable()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
    }
}

} // namespace
