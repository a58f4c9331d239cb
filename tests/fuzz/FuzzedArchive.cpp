// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/FuzzedArchive.h"

#include "client/firmware/Archive.h"
#include "client/model/Failure.h"
#include "fuzz/Descriptors.h"
#include "hardening/FirmwareSums.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cstdio>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace
{

constexpr std::size_t blockSize = 512;
constexpr std::size_t most = std::size_t{1} << 20;

// The sum of a header's bytes, where its own place counts as blanks.
void correctHeader(std::span<char> header)
{
    constexpr std::size_t place = 148;
    constexpr std::size_t length = 8;
    std::fill_n(header.begin() + place, length, ' ');
    const unsigned sum = std::accumulate(header.begin(), header.end(), 0U, [](unsigned before, char byte) {
        return before + static_cast<unsigned char>(byte);
    });
    std::snprintf(&header[place], length, "%06o", sum % 01000000);
}

std::string withRightChecksums(std::string tar)
{
    constexpr std::size_t magicPlace = 257;
    constexpr std::string_view magic = "ustar";
    for (std::size_t block = 0; block + blockSize <= tar.size(); block += blockSize) {
        if (tar.compare(block + magicPlace, magic.size(), magic) == 0) {
            correctHeader(std::span(tar).subspan(block, blockSize));
        }
    }
    return tar;
}

std::string compressed(const std::string& tar)
{
    std::string file(2 * tar.size() + 4096, '\0');
    std::size_t used = 0;
    const std::unique_ptr<archive, int (*)(archive*)> packer(archive_write_new(), archive_write_free);
    archive_write_set_format_raw(packer.get());
    archive_write_add_filter_gzip(packer.get());
    archive_write_set_options(packer.get(), "gzip:compression-level=1,gzip:!timestamp");
    archive_write_set_bytes_in_last_block(packer.get(), 1);
    archive_write_open_memory(packer.get(), file.data(), file.size(), &used);
    const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), archive_entry_free);
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    if (archive_write_header(packer.get(), entry.get()) != ARCHIVE_OK ||
        archive_write_data(packer.get(), tar.data(), tar.size()) < 0 ||
        archive_write_close(packer.get()) != ARCHIVE_OK) {
        throw std::runtime_error("cannot compress");
    }
    file.resize(used);
    return file;
}

std::vector<std::string> namesIn(const std::string& path)
{
    std::vector<std::string> names(1);
    for (const char letter : path) {
        if (letter == '/') {
            names.emplace_back();
        } else {
            names.back() += letter;
        }
    }
    return names;
}

bool isControl(char letter)
{
    return static_cast<unsigned char>(letter) < ' ' || letter == 0x7F;
}

bool isSafe(const ArchiveMember& member)
{
    const std::vector<std::string> names = namesIn(member.path);
    const auto leaves = [](const std::string& name) { return name == ".." || name.starts_with('-'); };
    return member.kind != MemberKind::special && !member.setsId && !member.path.starts_with('/') &&
           !member.target.starts_with('/') && std::ranges::none_of(names, leaves) &&
           std::ranges::none_of(member.path + member.target, isControl);
}

std::string objectionToResult(const Archive& archive, const Contents& contents)
{
    std::vector<std::string> files;
    contents.forEachFile([&](const std::string& file) { files.push_back(file); });
    if (files.size() > archive.members.size()) {
        return "more files than members";
    }
    if (const std::optional<std::string> text = contents.textOf(sumsName)) {
        const FirmwareSums sums = readSums(*text);
        for (const FileSum& sum : sums.files) {
            static_cast<void>(contents.digestOf(sum.path));
        }
        static_cast<void>(unlistedOf(files, sums));
    }
    if (!archive.problems.empty()) {
        return {};
    }
    std::string unsafe;
    archive.members.forEach([&](const ArchiveMember& member) { unsafe = isSafe(member) ? unsafe : member.path; });
    if (!unsafe.empty()) {
        return "nothing was said about " + unsafe;
    }
    return archive.unpacked > most ? "nothing was said about the size" : "";
}

std::string inspected(const std::string& path)
{
    try {
        Contents contents({sumsName, signatureName});
        const Archive archive = inspectArchive(
            path, [] {}, most, &contents);
        return objectionToResult(archive, contents);
    } catch (const Failure& failure) {
        return failure.code == ExitCode::badFile && !failure.hint.empty() ? "" : "a failure without a reason";
    }
}

} // namespace

std::string FuzzedArchive::feedArchive(std::span<const std::uint8_t> bytes)
{
    if (bytes.empty()) {
        return {};
    }
    const std::string text(bytes.begin() + 1, bytes.end());
    folder.write("archive", bytes.front() % 2 == 0 ? text : compressed(withRightChecksums(text)));
    const int descriptor = lowestFreeDescriptor();
    std::string problem = inspected(folder.path("archive"));
    return problem.empty() && lowestFreeDescriptor() != descriptor ? "a descriptor is left open" : problem;
}
