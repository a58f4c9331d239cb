// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Archive.h"

#include "client/model/Failure.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

class ArchiveTest : public testing::Test
{
protected:
    ArchiveTest()
    {
        std::string pattern = testing::TempDir() + "archive-XXXXXX";
        directory = ::mkdtemp(pattern.data());
    }
    ~ArchiveTest() override { std::filesystem::remove_all(directory); }

    [[nodiscard]] std::string file(const std::string& name) const { return directory + "/" + name; }

    void write(const std::string& name, const std::string& content) const
    {
        std::ofstream(file(name), std::ios::binary) << content;
    }

    [[nodiscard]] std::string read(const std::string& name) const
    {
        std::ifstream stream(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    // A tar archive with one file, "pnr/kernel", and one link.
    void pack(const std::string& name, bool compressed, const std::string& target = "kernel") const
    {
        archive* packer = archive_write_new();
        archive_write_set_format_ustar(packer);
        if (compressed) {
            archive_write_add_filter_gzip(packer);
        }
        archive_write_open_filename(packer, file(name).c_str());
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, "pnr/kernel");
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_size(entry, 5);
        archive_write_header(packer, entry);
        archive_write_data(packer, "KERN\n", 5);
        archive_entry_clear(entry);
        archive_entry_set_pathname(entry, "pnr/link");
        archive_entry_set_filetype(entry, AE_IFLNK);
        archive_entry_set_symlink(entry, target.c_str());
        archive_write_header(packer, entry);
        archive_entry_free(entry);
        archive_write_free(packer);
    }

    static std::string refusal(const std::string& path)
    {
        try {
            const Archive archive = inspectArchive(path);
            ADD_FAILURE() << path << " was taken, with " << archive.members.size() << " members";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::badFile);
            return failure.hint;
        }
        return "";
    }

    std::string directory;
};

} // namespace

TEST_F(ArchiveTest, ListsItsMembersWithKindSizeAndTarget)
{
    pack("good.tar.gz", true);
    const Archive archive = inspectArchive(file("good.tar.gz"));
    ASSERT_EQ(archive.members.size(), 2U);
    EXPECT_EQ(archive.members[0].path, "pnr/kernel");
    EXPECT_EQ(archive.members[0].kind, MemberKind::file);
    EXPECT_EQ(archive.members[0].size, 5);
    EXPECT_EQ(archive.members[1].kind, MemberKind::symlink);
    EXPECT_EQ(archive.members[1].target, "kernel");
    EXPECT_TRUE(archive.problems.empty());
}

TEST_F(ArchiveTest, TellsTheSizeOfTheFile)
{
    pack("good.tar.gz", true);
    EXPECT_EQ(inspectArchive(file("good.tar.gz")).size, std::filesystem::file_size(file("good.tar.gz")));
}

TEST_F(ArchiveTest, TellsEachProblemByTheMembersPath)
{
    pack("bad.tar.gz", true, "/etc/passwd");
    const Archive archive = inspectArchive(file("bad.tar.gz"));
    ASSERT_EQ(archive.problems.size(), 1U);
    EXPECT_EQ(archive.problems[0], "pnr/link is a link that leaves the directory: /etc/passwd");
}

TEST_F(ArchiveTest, AnArchiveWithAProblemMustNotGoToACard)
{
    pack("bad.tar.gz", true, "/etc/passwd");
    EXPECT_THROW(static_cast<void>(requireGoodArchive(file("bad.tar.gz"))), Failure);
}

TEST_F(ArchiveTest, AMissingFileIsNamed)
{
    EXPECT_EQ(refusal(file("none")), "cannot read " + file("none") + ": No such file or directory");
}

TEST_F(ArchiveTest, ADirectoryIsNoArchive)
{
    EXPECT_EQ(refusal(directory), directory + " is no regular file");
}

TEST_F(ArchiveTest, ATarWithoutCompressionIsRefused)
{
    pack("plain.tar", false);
    EXPECT_EQ(refusal(file("plain.tar")), file("plain.tar") + " is not compressed with gzip");
}

TEST_F(ArchiveTest, AnyOtherFileIsRefused)
{
    write("text", "no archive at all\n");
    EXPECT_NE(refusal(file("text")), "");
}

TEST_F(ArchiveTest, AnEmptyFileIsRefused)
{
    write("empty", "");
    EXPECT_NE(refusal(file("empty")), "");
}

TEST_F(ArchiveTest, ATruncatedArchiveIsRefusedWhereverItEnds)
{
    pack("good.tar.gz", true);
    const std::string whole = read("good.tar.gz");
    for (std::size_t size = 0; size + 8 < whole.size(); ++size) {
        write("cut", whole.substr(0, size));
        EXPECT_NE(refusal(file("cut")), "") << size << " bytes of " << whole.size();
    }
}
