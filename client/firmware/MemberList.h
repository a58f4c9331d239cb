// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/PackedBytes.h"
#include "hardening/MemberRules.h"

#include <cstddef>
#include <functional>

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
    PackedBytes bytes;
    ArchiveMember last;
    std::size_t count = 0;
};
