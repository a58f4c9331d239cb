// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/FormerSettings.h"

#include "client/card/LastHeard.h"
#include "client/messages/TimeReference.h"
#include "client/model/CalendarTime.h"
#include "client/model/Failure.h"
#include "client/plan/IpPlan.h"

#include <cstddef>
#include <cstdint>
#include <fmt/core.h>
#include <vector>

namespace
{

Failure nothingRemembered(const std::string& card)
{
    return usageFailure(fmt::format("no change of {} was made from here; say with --if and --static, --dhcp or "
                                    "--disabled what it shall have",
                                    card));
}

Failure noSuchEntry(const std::string& card, int number, std::size_t known)
{
    return usageFailure(
        fmt::format("{} former settings of {} are known, so there is none with number {}; `tarvelctl ip "
                    "rescue --list {}` shows them",
                    known, card, number, card));
}

std::vector<RememberedIp> known(const std::string& card)
{
    std::vector<RememberedIp> entries = rememberedIps(card);
    if (entries.empty()) {
        throw nothingRemembered(card);
    }
    return entries;
}

} // namespace

void listFormerSettings(const std::string& card, Result& result)
{
    result.listName = "former_settings";
    for (const RememberedIp& entry : known(card)) {
        result.list.push_back({{"number", static_cast<std::int64_t>(result.list.size() + 1)},
                               {"interface", entry.settings.name},
                               {"settings", describe(entry.settings)},
                               {"time", timeCell(entry)},
                               {"age", ageCell(entry)}});
    }
}

RememberedIp formerSettings(const std::string& card, int number)
{
    const std::vector<RememberedIp> entries = known(card);
    const auto index = static_cast<std::size_t>(number) - 1;
    if (index >= entries.size()) {
        throw noSuchEntry(card, number, entries.size());
    }
    return entries[index];
}

Cell timeCell(const RememberedIp& entry)
{
    return entry.time ? Cell(formatTime(*entry.time) + "Z") : Cell();
}

Cell ageCell(const RememberedIp& entry)
{
    return entry.time ? Cell(ageText(secondsNow() - *entry.time)) : Cell();
}
