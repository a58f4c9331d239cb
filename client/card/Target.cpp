// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Target.h"

#include <fmt/ranges.h>

std::optional<std::string> Target::doubtOfName() const
{
    if (otherNames.empty()) {
        return std::nullopt;
    }
    return fmt::format("the groups file gives {} several names: {} and {}", label, name,
                       fmt::join(otherNames, " and "));
}
