// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Category.h"

#include <algorithm>
#include <array>

namespace
{

struct Word {
    Category category;
    std::string_view text;
};

// Scripts compare them: a word that was once printed stays.
constexpr std::array words = {
    Word{Category::none, ""},
    Word{Category::ambiguous, "ambiguous"},
    Word{Category::badArchive, "bad-archive"},
    Word{Category::badFile, "bad-file"},
    Word{Category::cannotKeepServer, "cannot-keep-server"},
    Word{Category::closed, "closed"},
    Word{Category::connectTimeout, "connect-timeout"},
    Word{Category::differs, "differs"},
    Word{Category::garbage, "garbage"},
    Word{Category::internal, "internal"},
    Word{Category::interrupted, "interrupted"},
    Word{Category::lost, "lost"},
    Word{Category::needsForce, "needs-force"},
    Word{Category::needsYes, "needs-yes"},
    Word{Category::noAddress, "no-address"},
    Word{Category::noInterface, "no-interface"},
    Word{Category::noNetwork, "no-network"},
    Word{Category::noRoute, "no-route"},
    Word{Category::noSocket, "no-socket"},
    Word{Category::notAsExpected, "not-as-expected"},
    Word{Category::notBack, "not-back"},
    Word{Category::notFound, "not-found"},
    Word{Category::notHeard, "not-heard"},
    Word{Category::notRescued, "not-rescued"},
    Word{Category::notTaken, "not-taken"},
    Word{Category::refused, "refused"},
    Word{Category::refusedByCard, "refused-by-card"},
    Word{Category::rolledBack, "rolled-back"},
    Word{Category::stalled, "stalled"},
    Word{Category::stayedUp, "stayed-up"},
    Word{Category::timeout, "timeout"},
    Word{Category::tooFew, "too-few"},
    Word{Category::unchanged, "unchanged"},
    Word{Category::unknownCommand, "unknown-command"},
    Word{Category::untouched, "untouched"},
    Word{Category::usage, "usage"},
    Word{Category::wrongDevice, "wrong-device"},
    Word{Category::wrongService, "wrong-service"},
    Word{Category::wrongVersion, "wrong-version"},
};

} // namespace

std::string_view wordOf(Category category)
{
    const auto* const found =
        std::find_if(words.begin(), words.end(), [&](const Word& one) { return one.category == category; });
    return found == words.end() ? "" : found->text;
}
