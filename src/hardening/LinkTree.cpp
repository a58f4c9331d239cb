// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/LinkTree.h"

#include <algorithm>
#include <functional>
#include <string>

namespace
{

constexpr std::uint32_t top = 0;

std::size_t hashOf(std::uint32_t parent, std::string_view name)
{
    constexpr std::size_t spread = 0x9E3779B1; // odd, so that no two parents become one
    return std::hash<std::string_view>()(name) ^ (parent * spread);
}

} // namespace

bool LinkTree::isNode(std::uint32_t number, std::uint32_t parent, std::string_view name) const
{
    ++looked;
    const Node& node = nodes[number - 1];
    const auto start = names.begin() + static_cast<std::ptrdiff_t>(node.name);
    return node.parent == parent && std::equal(name.begin(), name.end(), start) &&
           names[node.name + name.size()] == '\0';
}

// Where it is, or would be put.
std::size_t LinkTree::slotOf(std::uint32_t parent, std::string_view name) const
{
    std::size_t slot = hashOf(parent, name) % slots.size();
    while (slots[slot] != 0 && !isNode(slots[slot], parent, name)) {
        slot = (slot + 1) % slots.size();
    }
    return slot;
}

std::uint32_t LinkTree::makeNode(std::uint32_t parent, std::string_view name)
{
    std::size_t slot = slotOf(parent, name);
    if (slots[slot] == 0) {
        nodes.push_back({names.size(), parent, false});
        names.insert(names.end(), name.begin(), name.end());
        names.push_back('\0');
        slots[slot] = static_cast<std::uint32_t>(nodes.size());
    }
    const std::uint32_t number = slots[slot];
    if (nodes.size() > slots.size() / 4 * 3) {
        grow();
    }
    return number;
}

void LinkTree::grow()
{
    slots.assign(slots.size() * 2, 0);
    std::string name;
    for (std::uint32_t number = 1; number <= nodes.size(); ++number) {
        const Node& node = nodes[number - 1];
        const auto start = names.begin() + static_cast<std::ptrdiff_t>(node.name);
        name.assign(start, std::find(start, names.end(), '\0'));
        slots[slotOf(node.parent, name)] = number;
    }
}

void LinkTree::insert(const std::vector<std::string_view>& place)
{
    std::uint32_t number = top;
    for (const std::string_view name : place) {
        number = makeNode(number, name);
    }
    if (number != top) {
        nodes[number - 1].isLink = true;
    }
}

bool LinkTree::leadsThrough(const std::vector<std::string_view>& place) const
{
    std::uint32_t number = top;
    for (const std::string_view name : place) {
        number = slots[slotOf(number, name)];
        if (number == 0 || nodes[number - 1].isLink) {
            return number != 0;
        }
    }
    return false;
}
