// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/MemberList.h"

void MemberList::add(const ArchiveMember& member)
{
    bytes.putText(last.path, member.path);
    bytes.putText(last.target, member.target);
    bytes.putNumber(static_cast<std::uint64_t>(member.kind));
    bytes.putNumber(member.setsId ? 1 : 0);
    bytes.putNumber(static_cast<std::uint64_t>(member.size));
    last = member;
    ++count;
}

void MemberList::forEach(const std::function<void(const ArchiveMember&)>& visit) const
{
    PackedBytes::Reader reader(bytes, 0);
    ArchiveMember member;
    for (std::size_t index = 0; index < count; ++index) {
        reader.text(member.path);
        reader.text(member.target);
        member.kind = static_cast<MemberKind>(reader.number());
        member.setsId = reader.number() != 0;
        member.size = static_cast<std::int64_t>(reader.number());
        visit(member);
    }
}
