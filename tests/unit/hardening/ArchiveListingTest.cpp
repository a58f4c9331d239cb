// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/ArchiveListing.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

constexpr const char* stamp = " 2026-11-22 14:51 ";

ArchiveMember only(const std::string& name, const std::string& details)
{
    const auto members = readListing(name + "\n", details + "\n");
    EXPECT_TRUE(members && members->size() == 1) << details;
    return members && !members->empty() ? members->front() : ArchiveMember();
}

bool isReadable(const std::string& names, const std::string& details)
{
    return readListing(names, details).has_value();
}

} // namespace

TEST(ArchiveListingTest, OfNothingHasNoMembers)
{
    const auto members = readListing("", "");
    ASSERT_TRUE(members);
    EXPECT_TRUE(members->empty());
}

TEST(ArchiveListingTest, TellsAFileOfGnuTar)
{
    const ArchiveMember file = only("d/a b", "-rw-r--r-- root/root      1234 2026-11-22 14:51 d/a b");
    EXPECT_EQ(file.path, "d/a b");
    EXPECT_EQ(file.kind, MemberKind::file);
    EXPECT_EQ(file.size, 1234);
    EXPECT_FALSE(file.setsId);
}

TEST(ArchiveListingTest, TellsAFileOfBusybox)
{
    const ArchiveMember file = only("d/f", "-rw-r--r-- 0/0      1234 2026-11-22 14:51:38 d/f");
    EXPECT_EQ(file.kind, MemberKind::file);
    EXPECT_EQ(file.size, 1234);
}

TEST(ArchiveListingTest, TellsDirectoriesAndWhatIsNeitherFileNorLink)
{
    EXPECT_EQ(only("d/", "drwxr-xr-x 0/0 0 2026-11-22 14:51 d/").kind, MemberKind::directory);
    EXPECT_EQ(only("n", "crw-r--r-- 0/0 1,3 2026-11-22 14:51 n").kind, MemberKind::special);
    EXPECT_EQ(only("p", "prw-r--r-- 0/0 0 2026-11-22 14:51 p").kind, MemberKind::special);
    EXPECT_EQ(only("?", "?rw-r--r-- 0/0 0 2026-11-22 14:51 ?").kind, MemberKind::special);
}

TEST(ArchiveListingTest, TellsALinkAndItsTarget)
{
    const ArchiveMember link = only("d/l", "lrwxrwxrwx 0/0 0 2026-11-22 14:51 d/l -> ../x -> y");
    EXPECT_EQ(link.kind, MemberKind::symlink);
    EXPECT_EQ(link.target, "../x -> y");
}

TEST(ArchiveListingTest, TellsAHardLinkOfEitherTar)
{
    const ArchiveMember gnu = only("d/h", "hrw-r--r-- 0/0 0 2026-11-22 14:51 d/h link to d/f");
    EXPECT_EQ(gnu.kind, MemberKind::hardlink);
    EXPECT_EQ(gnu.target, "d/f");
    const ArchiveMember busybox = only("d/h", "-rw-r--r-- 0/0 0 2026-11-22 14:51:38 d/h -> d/f");
    EXPECT_EQ(busybox.kind, MemberKind::hardlink);
    EXPECT_EQ(busybox.target, "d/f");
}

TEST(ArchiveListingTest, TellsWhoRunsAsAnother)
{
    for (const char* mode : {"-rwsr-xr-x", "-rwSr--r--", "-rwxr-sr-x", "-rw-r-Sr--"}) {
        EXPECT_TRUE(only("f", std::string(mode) + " 0/0 1" + stamp + "f").setsId) << mode;
    }
    EXPECT_FALSE(only("f", std::string("-rwxr-xr-t 0/0 1") + stamp + "f").setsId);
}

TEST(ArchiveListingTest, PutsBytesBeyondAsciiTogetherAndNothingElse)
{
    EXPECT_EQ(only("\\303\\244", std::string("-rw-r--r-- 0/0 1") + stamp + "\\303\\244").path, "\xC3\xA4");
    EXPECT_EQ(only("a\\nb", std::string("-rw-r--r-- 0/0 1") + stamp + "a\\nb").path, "a\\nb");
    EXPECT_EQ(only("a\\057", std::string("-rw-r--r-- 0/0 1") + stamp + "a\\057").path, "a\\057");
    EXPECT_EQ(only("a\\30", std::string("-rw-r--r-- 0/0 1") + stamp + "a\\30").path, "a\\30");
}

TEST(ArchiveListingTest, IsNoneIfTheTwoDoNotBelongTogether)
{
    const std::string line = std::string("-rw-r--r-- 0/0 1") + stamp + "f\n";
    EXPECT_TRUE(isReadable("f\n", line));
    EXPECT_FALSE(isReadable("f\n", ""));
    EXPECT_FALSE(isReadable("", line));
    EXPECT_FALSE(isReadable("g\n", line));
    EXPECT_FALSE(isReadable("f\nf\n", line));
    EXPECT_FALSE(isReadable("f", line)); // its end is not there
    EXPECT_FALSE(isReadable("\n", "\n"));
}

TEST(ArchiveListingTest, IsNoneIfALineIsNoMembers)
{
    for (const char* line :
         {"f", " f", "-rw-r--r-- f", "-rw-r--r-- 0/0 1 2026-11-22 f", "-rw-r--r-- 0/0 x 2026-11-22 14:51 f",
          "-rw-r--r-- 0/0 1 2026-11-22 14:5x f", "-rw 0/0 1 2026-11-22 14:51 f", "-rw-r--r-- 0/0 1 2026-11-22 14:51 ff",
          "-rw-r--r-- 0/0 99999999999999999999 2026-11-22 14:51 f"}) {
        EXPECT_FALSE(isReadable("f\n", std::string(line) + "\n")) << line;
    }
}

// A name with a line end is two lines for busybox.
TEST(ArchiveListingTest, IsNoneForANameOfTwoLines)
{
    EXPECT_FALSE(isReadable("a\nb\n", std::string("-rw-r--r-- 0/0 1") + stamp + "a\nb\n"));
}

TEST(ArchiveListingTest, IsNoneIfAnOwnerLooksLikeTheRestOfALine)
{
    const std::string owner = std::string("x 0") + stamp + "f -> b";
    EXPECT_FALSE(isReadable("f\n", "lrwxrwxrwx " + owner + "/x 0" + stamp + "f -> /etc\n"));
}

TEST(ArchiveListingTest, IsNoneIfATargetLooksLikeTheRestOfALine)
{
    EXPECT_FALSE(isReadable("f\n", std::string("lrwxrwxrwx 0/0 0") + stamp + "f -> /etc 0" + stamp + "f -> b\n"));
}
