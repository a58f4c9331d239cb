// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/GroupsNote.h"

#include "client/card/Ambiguity.h"

#include <fmt/core.h>

Failure staleNote(const Target& target, const std::vector<CardReply>& answers)
{
    const std::string name = target.name;
    return {ExitCode::ambiguous, Category::ambiguous, "looking for the card",
            fmt::format("the groups file says that {0} is at {1}, but it answered from {2}; nothing was sent, also "
                        "with --force. The right line is \"{0} {3}\"",
                        name, target.endpoint->address, sendersOf(answers), answers.front().address)};
}

Failure notHeard(const Target& target, const Failure& silence)
{
    return {silence.code, silence.category, silence.phase,
            fmt::format("only the groups file says where {} is: {}. --trust-groups believes the file", target.name,
                        silence.hint)};
}
