// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Agreement.h"

#include "client/cli/Context.h"
#include "client/engine/EventLoop.h"
#include "client/model/Failure.h"
#include "client/model/Ranges.h"
#include "client/output/Console.h"
#include "client/output/Printable.h"

#include <algorithm>
#include <fmt/core.h>
#include <unistd.h>

namespace
{

std::string textOf(const ChangePlan& plan)
{
    // A list, so that cards stay in the order in which they were given.
    std::vector<std::pair<std::string, std::vector<std::string>>> groups;
    for (const auto& [card, about] : plan.cards) {
        const auto known = std::find_if(groups.begin(), groups.end(),
                                        [&wanted = about](const auto& group) { return group.first == wanted; });
        (known == groups.end() ? groups.emplace_back(about, std::vector<std::string>{}) : *known)
            .second.push_back(card);
    }
    std::string text = plan.title;
    for (const auto& [about, cards] : groups) {
        text += fmt::format("\n  {}{}{}", printable(foldRanges(cards)), about.empty() ? "" : ": ", printable(about));
    }
    return text;
}

} // namespace

bool agrees(const Context& context, const std::string& question)
{
    context.console.ask(question);
    try {
        context.loop.standStillUntilReadable(STDIN_FILENO);
    } catch (const Interrupted&) {
        // Of the whole run, because no target has begun.
        throw Failure{ExitCode::interrupted, Category::interrupted, "asking", "interrupted; nothing was sent"};
    }
    return Console::isAnsweredYes();
}

void requireAgreement(const Context& context, const ChangePlan& plan)
{
    if (!agrees(context, fmt::format("{}\nGo on?", textOf(plan)))) {
        throw Failure{ExitCode::usage, Category::needsYes, "asking", "not agreed to; nothing was sent"};
    }
}
