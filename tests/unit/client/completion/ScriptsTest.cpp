// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/completion/Scripts.h"

#include <gtest/gtest.h>

namespace
{

// Every command, option and choice, as they must occur in any script.
std::vector<std::string> wordsOf(const ProgramShape& shape)
{
    std::vector<std::string> words;
    for (const CommandShape& command : shape.commands) {
        words.push_back(command.name.substr(command.name.find(' ') + 1));
        for (const OptionShape& option : command.options) {
            words.push_back(option.names.back().substr(2));
            words.insert(words.end(), option.choices.begin(), option.choices.end());
        }
    }
    for (const OptionShape& option : shape.program.options) {
        words.push_back(option.names.back().substr(2));
    }
    return words;
}

using MakeScript = std::string (*)(const ProgramShape&);

class CompletionScriptTest : public testing::TestWithParam<MakeScript>
{
};

TEST_P(CompletionScriptTest, NamesEveryCommandAndOption)
{
    const ProgramShape shape = shapeOfProgram();
    const std::string script = GetParam()(shape);
    for (const std::string& word : wordsOf(shape)) {
        EXPECT_NE(script.find(word), std::string::npos) << word;
    }
}

TEST_P(CompletionScriptTest, KeepsAnApostropheInAHelpFromEndingAWord)
{
    ProgramShape shape;
    shape.commands.push_back({"a", "the card's own", {{{"--b"}, "it's", ValueKind::none, {}, false}}, {}});
    const std::string script = GetParam()(shape);
    EXPECT_EQ(script.find("card's"), std::string::npos);
    EXPECT_EQ(script.find("it's"), std::string::npos);
}

// Such as -o, behind which a command may want a file and the program a format: the first that fits counts.
TEST(OptionOfTheSameNameTest, OfACommandComesBeforeTheProgramsOwn)
{
    ProgramShape shape;
    shape.program.options.push_back({{"-o"}, "everywhere", ValueKind::choice, {"json"}, false});
    shape.commands.push_back({"a", "own", {{{"-o"}, "here", ValueKind::file, {}, false}}, {}});
    const std::string bash = bashCompletion(shape);
    EXPECT_LT(bash.find("'a':-o) kind='file'"), bash.find("*:-o) kind='words json'")) << bash;
    EXPECT_NE(bash.find("'a') kind='' ;;"), std::string::npos) << "it is offered twice";
    EXPECT_NE(zshCompletion(shape).find("_arguments $own $_tarvelctl_options"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Shells, CompletionScriptTest, testing::Values(bashCompletion, zshCompletion, fishCompletion));

TEST(ProgramShapeTest, EveryGroupOfCommandsHasASummary)
{
    for (const CommandShape& group : shapeOfProgram().groups) {
        EXPECT_NE(group.summary, "") << group.name;
    }
}

TEST(ProgramShapeTest, TellsAFileFromACardByTheWordForTheValue)
{
    const ProgramShape shape = shapeOfProgram();
    for (const CommandShape& command : shape.commands) {
        if (command.name == "versions") {
            EXPECT_EQ(command.options.back().names, std::vector<std::string>{"--expect"});
            EXPECT_EQ(command.options.back().kind, ValueKind::file);
            EXPECT_EQ(command.arguments.front().kind, ValueKind::card);
        }
    }
}

TEST(ProgramShapeTest, PutsTheCommandsOfAGroupBehindIt)
{
    const std::vector<CommandShape> words = wordsAfter(shapeOfProgram(), "time");
    ASSERT_EQ(words.size(), 2U);
    EXPECT_EQ(words[0].name, "get");
    EXPECT_EQ(words[1].name, "set");
}

TEST(ProgramShapeTest, NamesEachGroupOnceAmongTheFirstWords)
{
    int times = 0;
    for (const CommandShape& word : wordsAfter(shapeOfProgram(), "")) {
        times += word.name == "ip" ? 1 : 0;
    }
    EXPECT_EQ(times, 1);
}

} // namespace
