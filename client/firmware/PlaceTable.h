// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/Sha256.h"
#include "client/firmware/TextList.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// What lies at which place, in little room, because there may be hundreds of thousands of them: of a place only a
// digest is kept, long enough that nobody finds two places with the same one.
class PlaceTable
{
public:
    // A hard link to no file.
    using Nothing = std::monostate;

    struct Directory {
    };

    struct Link {
        std::string target;
    };

    // A file is known by what is in it.
    using Entry = std::variant<Nothing, Directory, Sha256Sum, Link>;

    void put(const std::string& place, const Entry& entry); // instead of what lies there
    [[nodiscard]] std::optional<Entry> at(const std::string& place) const;

private:
    using Key = std::array<std::uint32_t, 5>;

    struct Record {
        Key key;
        std::uint32_t entry; // its kind, and the number of what there is to know of it
    };

    [[nodiscard]] static Key keyOf(const std::string& place);
    [[nodiscard]] std::size_t slotOf(const Key& key) const; // its own, or the free one where it belongs
    [[nodiscard]] std::uint32_t packed(const Entry& entry);
    void grow();

    std::deque<Record> records;       // grow without being copied
    std::vector<std::uint32_t> slots; // 1 + the number of a record, or 0; never full
    std::deque<Sha256Sum> sums;       // of the files
    TextList targets;                 // of the links
};
