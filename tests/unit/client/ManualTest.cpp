// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/LocalFile.h"
#include "client/completion/CommandShape.h"

#include <gtest/gtest.h>

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

TEST(Manual, NamesEveryOptionOfTheProgram)
{
    const std::string options = section(manual(), "# OPTIONS");
    for (const OptionShape& option : shapeOfProgram().program.options) {
        expectNamed(options, option, "OPTIONS");
    }
}

TEST(Manual, HasASectionForEveryCommandWithItsOptions)
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

TEST(Manual, DescribesNoCommandThatIsNotThere)
{
    const std::string text = manual();
    std::size_t headings = 0;
    for (std::size_t at = text.find("\n## "); at != std::string::npos; at = text.find("\n## ", at + 1)) {
        ++headings;
    }
    EXPECT_EQ(headings, shapeOfProgram().commands.size());
}

TEST(Manual, WarnsOfWhatDiscoveryCosts)
{
    const std::string about = section(manual(), "## discover ");
    EXPECT_NE(about.find("warning in the log"), std::string::npos);
    EXPECT_NE(about.find("dump of its header"), std::string::npos);
}

} // namespace
