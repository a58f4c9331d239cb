// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/PlaceTable.h"

#include <algorithm>
#include <span>

namespace
{

constexpr std::size_t fewestSlots = 1024; // all numbers of them are powers of two
constexpr unsigned halfWord = 32;

} // namespace

void PlaceTable::put(const std::string& place, const Entry& entry)
{
    if (4 * (records.size() + 1) > 3 * slots.size()) {
        grow();
    }
    Record record{keyOf(place), static_cast<std::uint32_t>(entry.index()), {}};
    if (const auto* sum = std::get_if<Sha256Sum>(&entry)) {
        record.sum = *sum;
    } else if (const auto* link = std::get_if<Link>(&entry)) {
        record.sum = packed(link->target);
    }
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
    const Record& record = records[number - 1];
    if (record.kind == Entry(Sha256Sum()).index()) {
        return record.sum;
    }
    if (record.kind == Entry(Link()).index()) {
        return Link{unpacked(record.sum)};
    }
    if (record.kind == Entry(Directory()).index()) {
        return Directory();
    }
    return Nothing();
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

Sha256Sum PlaceTable::packed(const std::string& target)
{
    const std::uint64_t start = targets.size();
    targets.insert(targets.end(), target.begin(), target.end());
    return {static_cast<std::uint32_t>(start >> halfWord), static_cast<std::uint32_t>(start),
            static_cast<std::uint32_t>(target.size())};
}

std::string PlaceTable::unpacked(const Sha256Sum& where) const
{
    const std::uint64_t start = (std::uint64_t{where[0]} << halfWord) | where[1];
    const auto first = targets.begin() + static_cast<std::ptrdiff_t>(start);
    return {first, first + static_cast<std::ptrdiff_t>(where[2])};
}

void PlaceTable::grow()
{
    slots.assign(std::max(fewestSlots, 2 * slots.size()), 0);
    for (std::size_t index = 0; index < records.size(); ++index) {
        slots[slotOf(records[index].key)] = static_cast<std::uint32_t>(index + 1);
    }
}
