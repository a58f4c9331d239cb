// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/PlaceTable.h"

#include <algorithm>
#include <span>

namespace
{

constexpr std::size_t fewestSlots = 1024; // all numbers of them are powers of two
constexpr std::uint32_t kinds = std::variant_size_v<PlaceTable::Entry>;

} // namespace

void PlaceTable::put(const std::string& place, const Entry& entry)
{
    if (4 * (records.size() + 1) > 3 * slots.size()) {
        grow();
    }
    const Record record{keyOf(place), packed(entry)};
    std::uint32_t& slot = slots[slotOf(record.key)];
    if (slot == 0) {
        records.push_back(record);
        slot = static_cast<std::uint32_t>(records.size());
    } else {
        records[slot - 1] = record;
    }
}

std::optional<PlaceTable::Entry> PlaceTable::at(const std::string& place) const
{
    const std::uint32_t number = slots.empty() ? 0 : slots[slotOf(keyOf(place))];
    if (number == 0) {
        return std::nullopt;
    }
    const std::uint32_t packed = records[number - 1].entry;
    const std::uint32_t kind = packed % kinds;
    if (kind == Entry(Sha256Sum()).index()) {
        return sums[packed / kinds];
    }
    if (kind == Entry(Link()).index()) {
        return Link{targets.at(packed / kinds)};
    }
    if (kind == Entry(Directory()).index()) {
        return Directory();
    }
    return Nothing();
}

std::uint32_t PlaceTable::packed(const Entry& entry)
{
    std::uint32_t number = 0;
    if (const auto* sum = std::get_if<Sha256Sum>(&entry)) {
        number = static_cast<std::uint32_t>(sums.size());
        sums.push_back(*sum);
    } else if (const auto* link = std::get_if<Link>(&entry)) {
        number = targets.add(link->target);
    }
    return number * kinds + static_cast<std::uint32_t>(entry.index());
}

PlaceTable::Key PlaceTable::keyOf(const std::string& place)
{
    Sha256 digest;
    digest.add(std::as_bytes(std::span(place)));
    const Sha256Sum sum = digest.finish();
    Key key = {};
    std::copy_n(sum.begin(), key.size(), key.begin());
    return key;
}

std::size_t PlaceTable::slotOf(const Key& key) const
{
    std::size_t slot = key.front() & (slots.size() - 1);
    while (slots[slot] != 0 && records[slots[slot] - 1].key != key) {
        slot = (slot + 1) & (slots.size() - 1);
    }
    return slot;
}

void PlaceTable::grow()
{
    slots.assign(std::max(fewestSlots, 2 * slots.size()), 0);
    for (std::size_t index = 0; index < records.size(); ++index) {
        slots[slotOf(records[index].key)] = static_cast<std::uint32_t>(index + 1);
    }
}
