// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/Commands.h"

#include "support/ProtocolPage.h"

#include <gtest/gtest.h>

namespace
{

constexpr unsigned numbers = UINT16_MAX + 1;

CommandFacts factsOfNumber(unsigned number)
{
    return factsOf(static_cast<CommandId>(number));
}

// "1 versions report reads", for every number that has a name.
std::vector<std::string> told()
{
    std::vector<std::string> lines;
    for (unsigned number = 0; number < numbers; ++number) {
        const auto [name, effect] = factsOfNumber(number);
        if (name != "unknown command") {
            lines.push_back(std::to_string(number) + " " + std::string(name) +
                            (effect == Effect::reads ? " reads" : " changes"));
        }
    }
    return lines;
}

TEST(CommandsTest, EachHasTheNumberNameAndEffectThatThePageTells)
{
    std::vector<std::string> described;
    for (const DescribedCommand& command : describedCommands()) {
        described.push_back(std::to_string(command.number) + " " + command.name + " " + command.effect);
    }
    EXPECT_EQ(told(), described);
}

TEST(CommandsTest, NumberWithoutAMeaningIsTakenForAChange)
{
    EXPECT_EQ(factsOfNumber(0x7FFF).effect, Effect::changes);
    EXPECT_EQ(nameOf(static_cast<CommandId>(0x7FFF)), "unknown command");
}

} // namespace
