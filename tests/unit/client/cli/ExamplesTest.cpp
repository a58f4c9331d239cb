// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Cli.h"
#include "client/model/Failure.h"

#include <gtest/gtest.h>
#include <sstream>

namespace
{

// The command line in an example, without what the shell does around it; empty if there is none.
std::vector<std::string> commandLineIn(const std::string& example)
{
    const std::size_t start = example.rfind("tarvelctl ");
    if (start == std::string::npos) {
        return {};
    }
    std::istringstream words(example.substr(start, example.find_first_of("|>)#&", start) - start));
    std::vector<std::string> line;
    for (std::string word; words >> word && word != "2";) {
        line.push_back(word);
    }
    return line;
}

void expectUnderstood(const std::string& example, std::string_view command)
{
    const std::vector<std::string> words = commandLineIn(example);
    ASSERT_FALSE(words.empty()) << example;
    std::vector<const char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    CommandLine line;
    try {
        parseCommandLine(static_cast<int>(arguments.size()), arguments.data(), line);
        EXPECT_EQ(line.commandName, command) << example;
    } catch (const Failure& failure) {
        ADD_FAILURE() << example << ": " << failure.hint;
    }
}

TEST(ExamplesTest, OfEveryCommandAreUnderstoodAsThatCommand)
{
    for (const CommandRow& row : commandTable()) {
        std::istringstream examples{std::string(row.examples)};
        int count = 0;
        for (std::string example; std::getline(examples, example); ++count) {
            expectUnderstood(example, row.name);
        }
        EXPECT_GT(count, 0) << row.name;
    }
}

TEST(ExamplesTest, StandInTheHelpOfTheirCommand)
{
    const std::vector<const char*> words = {"tarvelctl", "versions", "--help"};
    CommandLine line;
    parseCommandLine(static_cast<int>(words.size()), words.data(), line);
    EXPECT_NE(line.text.find("Examples:\n  tarvelctl versions "), std::string::npos);
}

} // namespace
