// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/MemberRules.h"

#include <gtest/gtest.h>

namespace
{

bool accepts(const std::string& path, MemberKind kind = MemberKind::file, const std::string& target = "")
{
    return !MemberRules().problemWith({path, kind, 0, target});
}

bool acceptsLink(const std::string& path, const std::string& target)
{
    return accepts(path, MemberKind::symlink, target);
}

bool acceptsBehind(const ArchiveMember& first, const ArchiveMember& second)
{
    MemberRules rules;
    EXPECT_FALSE(rules.problemWith(first));
    return !rules.problemWith(second);
}

} // namespace

TEST(MemberRulesTest, APlainPathIsAccepted)
{
    EXPECT_TRUE(accepts("pnr/kernel"));
    EXPECT_TRUE(accepts("./pnr/kernel"));
    EXPECT_TRUE(accepts("./", MemberKind::directory));
}

TEST(MemberRulesTest, DotsWithinANameAreNoParentStep)
{
    EXPECT_TRUE(accepts("..pnr/a..b"));
}

TEST(MemberRulesTest, AnAbsolutePathIsRefused)
{
    EXPECT_EQ(MemberRules().problemWith({"/etc/passwd", MemberKind::file, 0, ""}), "has an absolute path");
}

TEST(MemberRulesTest, AParentStepIsRefusedWhereverItStands)
{
    EXPECT_FALSE(accepts("../x"));
    EXPECT_FALSE(accepts("pnr/../../x"));
    EXPECT_FALSE(accepts("pnr/.."));
}

TEST(MemberRulesTest, ASetuidBitIsRefused)
{
    EXPECT_EQ(MemberRules().problemWith({"pnr/x", MemberKind::file, 0, "", true}), "has the setuid or setgid bit");
}

TEST(MemberRulesTest, ControlCharactersAreRefused)
{
    for (const char* name : {"pnr/a\nb", "pnr/\x1b[2J", "a\x7f", "a\xc2\x9b",
                             "a\x9b"
                             "2J",
                             "\x80", "\xc3\xa4\x9f", "\xe2\x82\x82\x82"}) {
        EXPECT_FALSE(accepts(name)) << name;
    }
    EXPECT_FALSE(acceptsLink("pnr/link", "a\nb"));
    EXPECT_TRUE(accepts("pnr/\xc3\xa4\xc2\xa0"));
    EXPECT_TRUE(accepts("pnr/\xc3\x9f\xe2\x82\xac\xf0\x9f\x9b\x92")); // whose later bytes alone would be controls
}

TEST(MemberRulesTest, AnOptionIsRefusedAsAName)
{
    EXPECT_FALSE(accepts("-rf"));
    EXPECT_FALSE(accepts("pnr/--help/x"));
    EXPECT_TRUE(accepts("pnr/a-b"));
}

TEST(MemberRulesTest, ADeviceIsRefused)
{
    EXPECT_FALSE(accepts("dev/null", MemberKind::special));
}

TEST(MemberRulesTest, TheArchivesOwnNameIsRefusedAtTheTop)
{
    EXPECT_FALSE(accepts("firmware.tar.gz"));
    EXPECT_FALSE(accepts(".//firmware.tar.gz"));
    EXPECT_FALSE(accepts("firmware.tar.gz/x"));
    EXPECT_TRUE(accepts("old/firmware.tar.gz"));
}

TEST(MemberRulesTest, TheNameThatTheShellMakesOfTheHostNamesKeyIsRefusedAtTheTop)
{
    EXPECT_FALSE(accepts("system.@system0.hostname"));
    EXPECT_FALSE(accepts("./system.@system0.hostname"));
    EXPECT_TRUE(accepts("pnr/system.@system0.hostname"));
}

TEST(MemberRulesTest, ALinkWithinTheDirectoryIsAccepted)
{
    EXPECT_TRUE(acceptsLink("lib/libx.so", "libx.so.1"));
    EXPECT_TRUE(acceptsLink("lib/x", "../bin/x"));
}

TEST(MemberRulesTest, ALinkThatLeavesTheDirectoryIsRefused)
{
    EXPECT_FALSE(acceptsLink("x", "/etc"));
    EXPECT_FALSE(acceptsLink("x", ".."));
    EXPECT_FALSE(acceptsLink("lib/x", "../../etc"));
}

TEST(MemberRulesTest, ALinkThatClimbsBehindANameIsRefused)
{
    EXPECT_FALSE(acceptsLink("a/b/x", "c/../../y"));
}

TEST(MemberRulesTest, AHardLinkThatLeavesTheDirectoryIsRefused)
{
    EXPECT_TRUE(accepts("a", MemberKind::hardlink, "pnr/kernel"));
    EXPECT_FALSE(accepts("a", MemberKind::hardlink, "/etc/passwd"));
    EXPECT_FALSE(accepts("a", MemberKind::hardlink, "../x"));
}

TEST(MemberRulesTest, AMemberBelowALinkIsRefused)
{
    const ArchiveMember link{"up", MemberKind::symlink, 0, "a/b"};
    EXPECT_FALSE(acceptsBehind(link, {"up/file", MemberKind::file, 0, ""}));
    EXPECT_TRUE(acceptsBehind(link, {"upper", MemberKind::file, 0, ""}));
}

TEST(MemberRulesTest, AMemberInThePlaceOfALinkIsRefused)
{
    EXPECT_FALSE(acceptsBehind({"up", MemberKind::symlink, 0, "a"}, {"./up", MemberKind::file, 0, ""}));
}

TEST(MemberRulesTest, AHardLinkThroughALinkIsRefused)
{
    EXPECT_FALSE(acceptsBehind({"up", MemberKind::symlink, 0, "a"}, {"x", MemberKind::hardlink, 0, "up/y"}));
}
