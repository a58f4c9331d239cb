// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/ArchiveEntry.h"

#include <archive_entry.h>
#include <sys/stat.h>

namespace
{

MemberKind kindOf(archive_entry* entry)
{
    // First, because the type of a hard link says nothing of it.
    if (archive_entry_hardlink(entry) != nullptr) {
        return MemberKind::hardlink;
    }
    switch (archive_entry_filetype(entry)) {
    case AE_IFREG:
        return MemberKind::file;
    case AE_IFDIR:
        return MemberKind::directory;
    case AE_IFLNK:
        return MemberKind::symlink;
    default:
        return MemberKind::special;
    }
}

std::string textOrEmpty(const char* text)
{
    return text != nullptr ? text : "";
}

} // namespace

ArchiveMember memberOf(archive_entry* entry)
{
    ArchiveMember member;
    member.path = textOrEmpty(archive_entry_pathname(entry));
    member.kind = kindOf(entry);
    member.size = archive_entry_size(entry);
    member.target = member.kind == MemberKind::hardlink ? textOrEmpty(archive_entry_hardlink(entry))
                                                        : textOrEmpty(archive_entry_symlink(entry));
    member.setsId = (archive_entry_perm(entry) & (S_ISUID | S_ISGID)) != 0;
    return member;
}
