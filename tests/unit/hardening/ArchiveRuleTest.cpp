// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/ArchiveRule.h"

#include <gtest/gtest.h>

namespace
{

constexpr std::uint64_t most = 1000;

struct Listing {
    std::string names;
    std::string details;
    std::vector<std::string> files;

    void add(const std::string& mode, int size, const std::string& name, const std::string& behind = "")
    {
        names += name + "\n";
        details += mode + " 0/0 " + std::to_string(size) + " 2026-11-22 14:51 " + name + behind + "\n";
    }

    std::string objection() { return objectionToArchive(names, details, most, files); }
};

std::string objectionAlone(const std::string& mode, const std::string& name, const std::string& behind = "")
{
    Listing listing;
    listing.add(mode, 0, name, behind);
    return listing.objection();
}

} // namespace

TEST(ArchiveRuleTest, AcceptsAnArchiveAndTellsItsFiles)
{
    Listing listing;
    listing.add("drwxr-xr-x", 0, "./");
    listing.add("drwxr-xr-x", 0, "./pnr/");
    listing.add("-rw-r--r--", 600, "./pnr/kernel");
    listing.add("lrwxrwxrwx", 0, "pnr/newest", " -> kernel");
    EXPECT_EQ(listing.objection(), "");
    EXPECT_EQ(listing.files, (std::vector<std::string>{"pnr/kernel", "pnr/newest"}));
}

TEST(ArchiveRuleTest, RefusesWhatMustNotBeOnACard)
{
    EXPECT_EQ(objectionAlone("-rwsr-xr-x", "su"), "has a member su that has the setuid or setgid bit");
    EXPECT_EQ(objectionAlone("crw-r--r--", "mem"), "has a member mem that is a device, a pipe or a socket");
    EXPECT_NE(objectionAlone("-rw-r--r--", "../x"), "");
    EXPECT_NE(objectionAlone("-rw-r--r--", "firmware.tar.gz"), "");
    EXPECT_NE(objectionAlone("lrwxrwxrwx", "l", " -> /etc"), "");
    EXPECT_NE(objectionAlone("hrw-r--r--", "h", " link to /etc/shadow"), "");
    EXPECT_NE(objectionAlone("-rw-r--r--", "\\302\\205"), "");
}

TEST(ArchiveRuleTest, RefusesAMemberBehindALink)
{
    Listing listing;
    listing.add("lrwxrwxrwx", 0, "way", " -> pnr");
    listing.add("-rw-r--r--", 1, "way/x");
    EXPECT_EQ(listing.objection(), "has a member way/x that passes through a link of the same archive");
}

TEST(ArchiveRuleTest, RefusesABackslashWhichMayStandForAControlCharacter)
{
    EXPECT_EQ(objectionAlone("-rw-r--r--", "a\\nb"),
              "has a member a\\nb that has a backslash or a control character in its name");
    EXPECT_NE(objectionAlone("lrwxrwxrwx", "l", " -> a\\nb"), "");
}

TEST(ArchiveRuleTest, AcceptsAsMuchAsMayBeAndNotAByteMore)
{
    Listing listing;
    listing.add("-rw-r--r--", 999, "a");
    listing.add("-rw-r--r--", 1, "b");
    EXPECT_EQ(listing.objection(), "");
    listing.add("-rw-r--r--", 1, "c");
    EXPECT_EQ(listing.objection(), "is too large: more than 1000 bytes");
}

TEST(ArchiveRuleTest, RefusesWhatCannotBeTold)
{
    Listing listing;
    listing.names = "\n"; // tar had failed
    EXPECT_EQ(listing.objection(), "has members that cannot be told apart");
}
