// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/LocalFile.h"
#include "client/completion/CommandShape.h"
#include "client/model/ExitCode.h"

#include <cctype>
#include <fmt/core.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace
{

// The manual page's source, which marks what a user types with asterisks.
std::string manual()
{
    return readLocalFile(MANUAL_SOURCE);
}

// The text under the heading that begins so.
std::string section(const std::string& text, const std::string& heading)
{
    const std::size_t start = text.find("\n" + heading);
    return start == std::string::npos ? std::string() : text.substr(start, text.find("\n#", start + 1) - start);
}

void expectNamed(const std::string& text, const OptionShape& option, const std::string& where)
{
    for (const std::string& name : option.names) {
        EXPECT_NE(text.find("*" + name + "*"), std::string::npos) << name << " in " << where;
    }
}

TEST(ManualTest, NamesEveryOptionOfTheProgram)
{
    const std::string options = section(manual(), "# OPTIONS");
    for (const OptionShape& option : shapeOfProgram().program.options) {
        expectNamed(options, option, "OPTIONS");
    }
}

TEST(ManualTest, HasASectionForEveryCommandWithItsOptions)
{
    const std::string text = manual();
    for (const CommandShape& command : shapeOfProgram().commands) {
        const std::string about = section(text, "## " + command.name + " ");
        EXPECT_FALSE(about.empty()) << command.name;
        for (const OptionShape& option : command.options) {
            expectNamed(about, option, command.name);
        }
    }
}

TEST(ManualTest, DescribesNoCommandThatIsNotThere)
{
    const std::string text = manual();
    std::size_t headings = 0;
    for (std::size_t at = text.find("\n## "); at != std::string::npos; at = text.find("\n## ", at + 1)) {
        ++headings;
    }
    EXPECT_EQ(headings, shapeOfProgram().commands.size());
}

// Those whose names stand behind "reached by its address", up to the end of the sentence.
std::set<std::string> commandsTold(const std::string& text)
{
    const std::size_t start = text.find("is reached by its address");
    std::istringstream words(text.substr(start, text.find('.', start) - start));
    std::set<std::string> told;
    for (std::string word; words >> word;) {
        if (word.starts_with('*')) {
            told.insert(word.substr(1, word.rfind('*') - 1));
        }
    }
    return told;
}

TEST(ManualTest, TellsWhichCommandsReachACardThatHearsNoBroadcast)
{
    std::set<std::string> takeAddresses; // by the first word of their names
    for (const CommandShape& command : shapeOfProgram().commands) {
        for (const OptionShape& argument : command.arguments) {
            if (argument.names.front() == "TARGET") { // a command that needs names has a NAME there
                takeAddresses.insert(command.name.substr(0, command.name.find(' ')));
            }
        }
    }
    EXPECT_EQ(commandsTold(manual()), takeAddresses);
}

// The list of the exit statuses as "0 all well" and so on, without the marks around them.
std::vector<std::string> exitStatusesTold()
{
    std::istringstream lines(section(manual(), "# EXIT STATUS"));
    std::vector<std::string> told;
    for (std::string line; std::getline(lines, line);) {
        std::erase_if(line,
                      [](char letter) { return std::string_view("|[*<:").find(letter) != std::string_view::npos; });
        line.erase(0, line.find_first_not_of(' '));
        if (!line.empty() && std::isdigit(static_cast<unsigned char>(line.front())) != 0) {
            told.push_back(line);
        } else if (!told.empty() && !line.empty()) {
            told.back() += " " + line;
        }
    }
    return told;
}

TEST(ManualTest, ListsTheExitStatusesAsTheHelpDoes)
{
    std::vector<std::string> expected;
    for (const ExitStatus& status : exitStatuses()) {
        std::string meaning(status.meaning);
        std::erase(meaning, ':');
        expected.push_back(fmt::format("{} {}", static_cast<int>(status.code), meaning));
    }
    EXPECT_EQ(exitStatusesTold(), expected);
}

TEST(ManualTest, WarnsOfWhatDiscoveryCosts)
{
    const std::string about = section(manual(), "## discover ");
    EXPECT_NE(about.find("warning in the log"), std::string::npos);
    EXPECT_NE(about.find("dump of its header"), std::string::npos);
}

} // namespace
