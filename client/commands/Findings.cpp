// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Findings.h"

#include "client/model/Ranges.h"
#include "protocol/Commands.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

Failure nobody()
{
    return {ExitCode::noAnswer, Category::timeout, "listening for cards",
            fmt::format("no card answered: none is on this network, or a firewall here drops the replies, which come "
                        "from port {}, some of them as broadcasts",
                        cardPort)};
}

Failure tooFew(std::string hint)
{
    return {ExitCode::differs, Category::tooFew, "listening", std::move(hint)};
}

} // namespace

bool Findings::isNamed(const FoundCard& card) const
{
    return std::find(named.begin(), named.end(), std::pair(card.interface, card.address)) != named.end();
}

std::optional<Result> Findings::shortfall(std::size_t expected, bool byNames) const
{
    Result result;
    const std::size_t counted = byNames ? named.size() : unnamed;
    // Who expects names is told which are missing, also if all are.
    if (named.size() + unnamed == 0 && !(byNames && expected > 0)) {
        result.fail(nobody());
    } else if (counted < expected && byNames) {
        result.listName = "silent";
        std::transform(silent.begin(), silent.end(), std::back_inserter(result.list), [](const std::string& name) {
            return Row{{"name", name}};
        });
        result.fail(tooFew(
            fmt::format("{} names answered, {} expected; these did not: {}", counted, expected, foldRanges(silent))));
    } else if (counted < expected) {
        result.fail(tooFew(fmt::format("{} addresses were heard, {} expected", counted, expected)));
    }
    return result.ok() ? std::nullopt : std::optional(result);
}
