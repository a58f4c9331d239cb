// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Archive.h"

#include "client/model/Failure.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace
{

void goOn() {}

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

    // A tar archive with one file, "pnr/kernel", and a link, or more of the same name.
    void pack(const std::string& name, bool compressed, const std::string& target = "kernel", int links = 1) const
    {
        packLinks(name, compressed, target, links, [](int /*number*/) { return std::string("pnr/link"); });
    }

    void packLinks(const std::string& name, bool compressed, const std::string& target, int links,
                   const std::function<std::string(int)>& nameOfLink) const
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
        archive_entry_set_filetype(entry, AE_IFLNK);
        archive_entry_set_symlink(entry, target.c_str());
        for (int link = 0; link < links; ++link) {
            archive_entry_set_pathname(entry, nameOfLink(link).c_str());
            archive_write_header(packer, entry);
        }
        archive_entry_free(entry);
        archive_write_free(packer);
    }

    static std::string refusal(const std::string& path)
    {
        try {
            const Archive archive = inspectArchive(path, goOn);
            ADD_FAILURE() << path << " was taken, with " << archive.members.size() << " members";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::badFile);
            return failure.hint;
        }
        return "";
    }

    std::string directory;
};

TEST_F(ArchiveTest, IsLookedThroughUntilTheCheckpointThrows)
{
    pack("good.tar.gz", true);
    int passed = 0;
    const auto count = [&] { ++passed; };
    static_cast<void>(inspectArchive(file("good.tar.gz"), count));
    EXPECT_GE(passed, 4); // reading the file and its end, and the data of two members
    for (int last = 1; last <= passed; ++last) {
        int left = last;
        const auto stop = [&] {
            if (--left == 0) {
                throw garbage("enough");
            }
        };
        EXPECT_THROW(static_cast<void>(inspectArchive(file("good.tar.gz"), stop)), Failure) << last;
    }
}

} // namespace

TEST_F(ArchiveTest, ListsItsMembersWithKindSizeAndTarget)
{
    pack("good.tar.gz", true);
    const Archive archive = inspectArchive(file("good.tar.gz"), goOn);
    std::vector<ArchiveMember> members;
    archive.members.forEach([&](const ArchiveMember& member) { members.push_back(member); });
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(members[0].path, "pnr/kernel");
    EXPECT_EQ(members[0].kind, MemberKind::file);
    EXPECT_EQ(members[0].size, 5);
    EXPECT_EQ(members[1].kind, MemberKind::symlink);
    EXPECT_EQ(members[1].target, "kernel");
    EXPECT_TRUE(archive.problems.empty());
}

TEST_F(ArchiveTest, TellsTheSizeOfTheFile)
{
    pack("good.tar.gz", true);
    EXPECT_EQ(inspectArchive(file("good.tar.gz"), goOn).size, std::filesystem::file_size(file("good.tar.gz")));
}

TEST_F(ArchiveTest, TellsEachProblemByTheMembersPath)
{
    pack("bad.tar.gz", true, "/etc/passwd");
    const Archive archive = inspectArchive(file("bad.tar.gz"), goOn);
    ASSERT_EQ(archive.problems.size(), 1U);
    EXPECT_EQ(archive.problems[0], "pnr/link is a link that leaves the directory: /etc/passwd");
}

TEST_F(ArchiveTest, CountsTheProblemsThatAreTooManyToTell)
{
    const std::string problem = "pnr/link is a link that leaves the directory: /etc/passwd";
    pack("bad.tar.gz", true, "/etc/passwd", 100);
    EXPECT_EQ(inspectArchive(file("bad.tar.gz"), goOn).problems, std::vector<std::string>(100, problem));
    pack("bad.tar.gz", true, "/etc/passwd", 103);
    std::vector<std::string> told(100, problem);
    told.emplace_back("and 3 more members that a card must not get");
    EXPECT_EQ(inspectArchive(file("bad.tar.gz"), goOn).problems, told);
}

TEST_F(ArchiveTest, AnArchiveWithAProblemMustNotGoToACard)
{
    pack("bad.tar.gz", true, "/etc/passwd");
    EXPECT_THROW(static_cast<void>(requireGoodArchive(file("bad.tar.gz"), goOn)), Failure);
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

// Steps are those of the walk through the file, and each look at an earlier link.
TEST_F(ArchiveTest, TakesFourTimesAsManyStepsForFourTimesTheMembers)
{
    const auto stepsFor = [&](int links) {
        packLinks("many.tar.gz", true, "kernel", links, [](int number) { return "pnr/link" + std::to_string(number); });
        std::uint64_t steps = 0;
        const Archive archive = inspectArchive(file("many.tar.gz"), [&] { ++steps; });
        EXPECT_TRUE(archive.problems.empty());
        EXPECT_GE(archive.looks, static_cast<std::uint64_t>(links));
        return steps + archive.looks;
    };
    const std::uint64_t some = stepsFor(2000);
    EXPECT_GE(some, 2000U);
    EXPECT_LT(stepsFor(8000), 6 * some); // chance makes some names meet; the square would be 16 times as much
}

TEST_F(ArchiveTest, TellsTheUnpackedSize)
{
    pack("good.tar.gz", true);
    EXPECT_EQ(inspectArchive(file("good.tar.gz"), goOn).unpacked, 5);
}

TEST_F(ArchiveTest, RefusesWhatUnpacksToMore)
{
    pack("good.tar.gz", true);
    EXPECT_TRUE(inspectArchive(file("good.tar.gz"), goOn, 5).problems.empty());
    EXPECT_EQ(inspectArchive(file("good.tar.gz"), goOn, 4).problems.size(), 1);
}

TEST_F(ArchiveTest, RefusesASecondCompressedFileBehindTheFirst)
{
    pack("good.tar.gz", true);
    pack("other.tar.gz", true, "kernel", 40);
    const std::string another = "another compressed file follows behind the end of the first";
    for (const auto& [first, second] : {std::pair{"good.tar.gz", "other.tar.gz"}, {"other.tar.gz", "good.tar.gz"}}) {
        const std::vector<std::string> alone = inspectArchive(file(first), goOn).problems;
        EXPECT_EQ(std::count(alone.begin(), alone.end(), another), 0) << first;
        write("both", read(first) + read(second));
        const std::vector<std::string> problems = inspectArchive(file("both"), goOn).problems;
        ASSERT_FALSE(problems.empty()) << first;
        EXPECT_EQ(problems.back(), another); // and that its links stand twice
    }
}

TEST_F(ArchiveTest, RefusesAnArchiveBehindACompressedFileThatHoldsNothing)
{
    pack("good.tar.gz", true);
    const std::string begin("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10);
    const std::string named("\x1f\x8b\x08\x08\0\0\0\0\0\x03nothing\0", 18);
    const std::string brief("\x03\0", 2);
    const std::string stored("\x01\0\0\xff\xff", 5);
    const std::string flushed("\0\0\0\xff\xff", 5);
    const std::string end(8, '\0'); // checksum and size
    const std::vector<std::string> another = {"another compressed file follows behind the end of the first"};
    for (const std::string& nothing : {begin + brief, named + brief, begin + stored, begin + flushed + stored}) {
        write("both", nothing + end + read("good.tar.gz"));
        EXPECT_EQ(inspectArchive(file("both"), goOn).problems, another) << nothing.size();
        write("three", nothing + end + nothing + end + read("good.tar.gz"));
        EXPECT_EQ(inspectArchive(file("three"), goOn).problems, another) << nothing.size();
    }
}

TEST_F(ArchiveTest, RefusesBytesBehindItsEnd)
{
    pack("good.tar.gz", true);
    for (const char* rest : {"x", "another program", "\x1f\x8b"}) {
        std::filesystem::copy_file(file("good.tar.gz"), file("long"),
                                   std::filesystem::copy_options::overwrite_existing);
        std::ofstream(file("long"), std::ios::app) << rest;
        EXPECT_THROW(static_cast<void>(requireGoodArchive(file("long"), goOn)), Failure) << rest;
    }
    EXPECT_NO_THROW(static_cast<void>(requireGoodArchive(file("good.tar.gz"), goOn)));
}

TEST_F(ArchiveTest, TellsWhatIsInItToWhoWantsToKnow)
{
    pack("good.tar.gz", true);
    Contents contents({"pnr/kernel"});
    static_cast<void>(inspectArchive(file("good.tar.gz"), goOn, mostUnpacked, &contents));
    std::vector<std::string> files;
    contents.forEachFile([&](const std::string& path) { files.push_back(path); });
    EXPECT_EQ(files, (std::vector<std::string>{"pnr/kernel", "pnr/link"}));
    EXPECT_EQ(contents.textOf("pnr/kernel"), "KERN\n");
    EXPECT_EQ(contents.digestOf("pnr/link"), contents.digestOf("pnr/kernel"));
    EXPECT_NE(contents.digestOf("pnr/link"), std::nullopt);
}
