// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <utility>
#include <vector>

class Console;

// What is about to happen to several cards: of all together, and of each.
struct ChangePlan {
    std::string title;
    std::vector<std::pair<std::string, std::string>> cards; // name, and what there is to say of it
};

// Shows the plan, those put together of which the same is to be said, and asks. Throws a needsYes Failure for a no.
void requireAgreement(const Console& console, const ChangePlan& plan);
