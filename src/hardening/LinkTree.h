// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

// The links of an archive, and the directories above them. A place is its names from the top. To look for one takes as
// long as its path, however many links there are, and a link takes as much room as its own name.
class LinkTree
{
public:
    void insert(const std::vector<std::string_view>& place);

    // Is the place, or a directory above it, a link?
    [[nodiscard]] bool leadsThrough(const std::vector<std::string_view>& place) const;

    // How many nodes were looked at for all that: what it cost.
    [[nodiscard]] std::uint64_t looks() const { return looked; }

private:
    struct Node {
        std::size_t name; // where it starts in `names`
        std::uint32_t parent;
        bool isLink;
    };

    [[nodiscard]] std::size_t slotOf(std::uint32_t parent, std::string_view name) const;
    [[nodiscard]] bool isNode(std::uint32_t number, std::uint32_t parent, std::string_view name) const;
    std::uint32_t makeNode(std::uint32_t parent, std::string_view name);
    void grow();

    std::deque<char> names; // each with a 0 behind it
    std::deque<Node> nodes; // the number of the first is 1
    mutable std::uint64_t looked = 0;
    std::vector<std::uint32_t> slots = std::vector<std::uint32_t>(64); // numbers of nodes by their hash, 0 if free
};
