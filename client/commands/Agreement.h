// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <utility>
#include <vector>

struct Context;

// What is about to happen to several cards: of all together, and of each.
struct ChangePlan {
    std::string title;
    std::vector<std::pair<std::string, std::string>> cards; // name, and what there is to say of it
};

// Asks on the terminal. Throws an interrupted Failure for Ctrl-C, which is no answer.
[[nodiscard]] bool agrees(const Context& context, const std::string& question);

// Shows the plan, those put together of which the same is to be said, and asks. Throws a needsYes Failure for a no.
void requireAgreement(const Context& context, const ChangePlan& plan);
