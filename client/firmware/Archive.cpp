// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Archive.h"

#include "client/firmware/ArchiveEntry.h"
#include "client/firmware/Complaints.h"
#include "client/firmware/GzipStart.h"
#include "client/firmware/GzipTrailer.h"
#include "client/firmware/Sha256.h"
#include "client/model/Failure.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <cstring>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <memory>

namespace
{

// The header's payload length counts 4 bytes more and has 32 bits.
constexpr std::uint64_t largestArchive = 0xFFFFFFFF - 4;

Failure badArchive(std::string hint)
{
    return {ExitCode::badFile, Category::badArchive, "checking the archive", std::move(hint)};
}

Failure unreadable(const std::string& path)
{
    return badArchive(fmt::format("cannot read {}: {}", path, std::strerror(errno)));
}

void describeFile(Archive& archive, const Checkpoint& checkpoint)
{
    archive.file = HeldFile(archive.path);
    if (!archive.file) {
        throw unreadable(archive.path);
    }
    if (!archive.file.isRegular()) {
        throw badArchive(fmt::format("{} is no regular file", archive.path));
    }
    // Read by itself, since the walk through the members may stop early. By offsets, so that the walk, which gets the
    // same descriptor, begins at the start.
    Sha256 digest;
    std::vector<std::byte> piece(65536);
    for (;;) {
        checkpoint();
        const ssize_t size = archive.file.read(piece, archive.size);
        if (size == -1) {
            throw unreadable(archive.path);
        }
        if (size == 0) {
            break;
        }
        archive.size += static_cast<std::uint64_t>(size);
        digest.add(std::span(piece).first(static_cast<std::size_t>(size)));
    }
    archive.sha256 = inHexadecimal(digest.finish());
}

using Walker = std::unique_ptr<archive, int (*)(archive*)>;

Failure broken(const Walker& walker, const std::string& path)
{
    const char* reason = archive_error_string(walker.get());
    return badArchive(fmt::format("{} is no complete gzip-compressed tar archive: {}", path,
                                  reason != nullptr ? reason : "it ends too early"));
}

Walker openWalker(const Archive& archive)
{
    constexpr std::size_t blockSize = 65536;
    Walker walker(archive_read_new(), archive_read_free);
    archive_read_support_filter_gzip(walker.get());
    archive_read_support_format_tar(walker.get());
    // What holds nothing is to be called empty, and not broken.
    archive_read_support_format_empty(walker.get());
    archive_read_set_options(walker.get(), "tar:read_concatenated_archives"); // so that it reads to the file's end
    if (archive_read_open_fd(walker.get(), archive.file.descriptor(), blockSize) != ARCHIVE_OK) {
        throw broken(walker, archive.path);
    }
    return walker;
}

// What is learned of an archive member by member.
struct Walk {
    Archive& archive;
    std::uint64_t maximum;
    MemberRules rules;
    Contents* contents;
    ForeignOwners owners;
    Problems problems;
};

// Looks at what a member announces, before it is unpacked here. False: nothing more is to be unpacked.
bool admitMember(Walk& walk, archive_entry* entry)
{
    const ArchiveMember member = memberOf(entry);
    walk.archive.members.add(member);
    if (walk.contents != nullptr) {
        walk.contents->begin(member);
    }
    if (const std::optional<std::string> problem = walk.rules.problemWith(member)) {
        walk.problems.note(member.path, *problem);
    }
    walk.owners.note(archive_entry_uid(entry), archive_entry_gid(entry), member.path);
    // A crafted header may have a negative size, which must not make room for others.
    walk.archive.unpacked += static_cast<std::uint64_t>(std::max<std::int64_t>(member.size, 0));
    return walk.archive.unpacked <= walk.maximum;
}

// Unpacks a member into nothing, or only tells what is in it: to skip it would take as long, and could not be
// interrupted.
void walkData(Walk& walk, const Walker& walker, const Checkpoint& checkpoint)
{
    const void* block = nullptr;
    std::size_t size = 0;
    la_int64_t offset = 0;
    int result = ARCHIVE_OK;
    // A warning is about what this machine cannot have, such as a name in another encoding; the bytes are there.
    while (result == ARCHIVE_OK || result == ARCHIVE_WARN) {
        checkpoint();
        result = archive_read_data_block(walker.get(), &block, &size, &offset);
        if (walk.contents != nullptr && (result == ARCHIVE_OK || result == ARCHIVE_WARN)) {
            walk.contents->add(static_cast<std::uint64_t>(offset), {static_cast<const std::byte*>(block), size});
        }
    }
    if (result != ARCHIVE_EOF) {
        throw broken(walker, walk.archive.path);
    }
    if (walk.contents != nullptr) {
        walk.contents->end();
    }
}

// More was unpacked than the last gzip member holds, so it is not the only one. (Of the last few bytes the walker may
// have taken less than there are.) What holds nothing adds nothing, and is looked for.
bool hasSeveralGzipMembers(const Walker& walker, const HeldFile& file)
{
    constexpr std::uint32_t unread = 1024;
    const auto unpacked = static_cast<std::uint32_t>(archive_filter_bytes(walker.get(), 0));
    const std::uint32_t excess = unpacked - sizeInGzipTrailer(file).value_or(unpacked);
    return (excess != 0 && excess < UINT32_MAX - unread) || beginsWithEmptyGzip(file);
}

void walkMembers(Walk& walk, const Checkpoint& checkpoint)
{
    const std::string& path = walk.archive.path;
    const Walker walker = openWalker(walk.archive);
    archive_entry* entry = nullptr;
    int result = archive_read_next_header(walker.get(), &entry);
    if (archive_filter_code(walker.get(), 0) != ARCHIVE_FILTER_GZIP) {
        throw badArchive(fmt::format("{} is not compressed with gzip", path));
    }
    for (; result == ARCHIVE_OK || result == ARCHIVE_WARN; result = archive_read_next_header(walker.get(), &entry)) {
        if (!admitMember(walk, entry)) {
            walk.problems.tell(walk.archive.problems);
            walk.archive.problems.push_back(fmt::format("the archive unpacks to more than {} bytes", walk.maximum));
            return;
        }
        walkData(walk, walker, checkpoint);
    }
    if (result != ARCHIVE_EOF) {
        throw broken(walker, path);
    }
    walk.archive.looks = walk.rules.looks();
    walk.problems.tell(walk.archive.problems);
    walk.owners.tell(walk.archive.warnings);
    // -1 is what was taken of the file; 0, above, is what gzip made of it.
    if (static_cast<std::uint64_t>(archive_filter_bytes(walker.get(), -1)) != walk.archive.size) {
        walk.archive.problems.emplace_back("the file goes on behind the end of the archive");
    } else if (hasSeveralGzipMembers(walker, walk.archive.file)) {
        walk.archive.problems.emplace_back("another compressed file follows behind the end of the first");
    }
}

} // namespace

std::string_view kindName(MemberKind kind)
{
    switch (kind) {
    case MemberKind::file:
        return "file";
    case MemberKind::directory:
        return "directory";
    case MemberKind::symlink:
        return "link";
    case MemberKind::hardlink:
        return "hard link";
    case MemberKind::special:
        return "special";
    }
    return "special";
}

Archive inspectArchive(const std::string& path, const Checkpoint& checkpoint, std::uint64_t maximum, Contents* contents)
{
    Archive archive;
    archive.path = path;
    describeFile(archive, checkpoint);
    if (archive.size > largestArchive) {
        throw badArchive(fmt::format("{} is larger than a message can carry: {} bytes", path, archive.size));
    }
    Walk walk{archive, maximum, {}, contents, {}, {}};
    walkMembers(walk, checkpoint);
    // Or what was judged is a mixture of two files.
    if (!archive.file.isUnchanged()) {
        throw badArchive(fmt::format("{} changed while it was looked through", path));
    }
    if (archive.members.empty()) {
        archive.problems.emplace_back("the archive is empty");
    }
    return archive;
}

Archive requireGoodArchive(const std::string& path, const Checkpoint& checkpoint, std::uint64_t maximum)
{
    Archive archive = inspectArchive(path, checkpoint, maximum);
    if (!archive.problems.empty()) {
        throw badArchive(fmt::format("{} must not go to a card: {}", path, fmt::join(archive.problems, "; ")));
    }
    return archive;
}
