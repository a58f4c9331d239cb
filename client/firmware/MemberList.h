// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "hardening/MemberRules.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>

// The members of an archive in their order, in little room, because there may be hundreds of thousands of them: what a
// path has in common with the one before it, and a link's target with that of the link before, is not kept again.
class MemberList
{
public:
    void add(const ArchiveMember& member);
    void forEach(const std::function<void(const ArchiveMember&)>& visit) const;

    [[nodiscard]] std::size_t size() const { return count; }
    [[nodiscard]] bool empty() const { return count == 0; }

private:
    void putNumber(std::uint64_t number);
    void putText(const std::string& before, const std::string& text);

    std::deque<char> bytes; // grows without being copied
    ArchiveMember last;
    std::size_t count = 0;
};
