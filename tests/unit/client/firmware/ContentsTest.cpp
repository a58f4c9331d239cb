// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Contents.h"

#include "TextFiles.h"

#include <gtest/gtest.h>

namespace
{

class ContentsTest : public testing::Test
{
protected:
    void file(const std::string& path, std::string_view text) { putFile(contents, path, text); }
    void other(const std::string& path, MemberKind kind, const std::string& target = "")
    {
        contents.begin({path, kind, 0, target, false});
        contents.end();
    }

    Contents contents{{"kept", "d/kept"}};
};

} // namespace

TEST_F(ContentsTest, HasTheDigestOfEachFile)
{
    file("a", "one");
    file("./d//b", "");
    EXPECT_EQ(contents.digestOf("a"), digestOfText("one"));
    EXPECT_EQ(contents.digestOf("d/./b"), digestOfText(""));
    EXPECT_EQ(contents.digestOf("d"), std::nullopt);
    EXPECT_EQ(contents.digestOf("a/b"), std::nullopt);
    EXPECT_EQ(contents.digestOf(""), std::nullopt);
    EXPECT_EQ(contents.digestOf("/a"), std::nullopt);
}

TEST_F(ContentsTest, NamesAllMembersButTheDirectories)
{
    other("./", MemberKind::directory);
    file("./a", "");
    other("d/link", MemberKind::symlink, "../a");
    file("d//long-name-1", "");
    file("d/long-name-2", "");
    file("d//long-name-1", "");
    std::vector<std::string> files;
    contents.forEachFile([&](const std::string& path) { files.push_back(path); });
    EXPECT_EQ(files, (std::vector<std::string>{"a", "d/link", "d//long-name-1", "d/long-name-2", "d//long-name-1"}));
}

TEST_F(ContentsTest, ALaterMemberTakesThePlaceOfAnEarlierOne)
{
    file("a", "one");
    file(".//a", "two");
    EXPECT_EQ(contents.digestOf("a"), digestOfText("two"));
    file("kept", "old");
    other("kept", MemberKind::symlink, "a");
    EXPECT_EQ(contents.textOf("kept"), std::nullopt);
}

TEST_F(ContentsTest, LinksLeadToWhatTheyLeadTo)
{
    file("d/e/a", "one");
    other("d/link", MemberKind::symlink, "e/a");
    other("way", MemberKind::symlink, "d");
    other("x/y/up", MemberKind::symlink, "../.././way/link");
    other("nowhere", MemberKind::symlink, "d/f");
    other("directory", MemberKind::symlink, "d/e");
    EXPECT_EQ(contents.digestOf("x/y/up"), digestOfText("one"));
    EXPECT_EQ(contents.digestOf("way/e/a"), digestOfText("one"));
    EXPECT_EQ(contents.digestOf("nowhere"), std::nullopt);
    EXPECT_EQ(contents.digestOf("directory"), std::nullopt);
}

TEST_F(ContentsTest, NoPathLeadsOutOfTheDirectory)
{
    file("a", "one");
    other("d/link", MemberKind::symlink, "../../a");
    EXPECT_EQ(contents.digestOf("../a"), std::nullopt);
    EXPECT_EQ(contents.digestOf("d/../../a"), std::nullopt);
    EXPECT_EQ(contents.digestOf("d/link"), std::nullopt);
    EXPECT_EQ(contents.digestOf("d/../a"), digestOfText("one"));
}

TEST_F(ContentsTest, NoPathLeadsThroughWhatIsNoDirectory)
{
    file("a", "one");
    file("d/e/b", "two");
    file("d-c", "three");
    other("./empty/", MemberKind::directory);
    other("way", MemberKind::symlink, "nosuch");
    EXPECT_EQ(contents.digestOf("nosuch/../a"), std::nullopt);
    EXPECT_EQ(contents.digestOf("d/nosuch/.././e/b"), std::nullopt);
    EXPECT_EQ(contents.digestOf("empty/e/../../a"), std::nullopt);
    EXPECT_EQ(contents.digestOf("way/../a"), std::nullopt);
    EXPECT_EQ(contents.digestOf("a/../a"), std::nullopt);
    EXPECT_EQ(contents.digestOf("a/."), std::nullopt);
    EXPECT_EQ(contents.digestOf("a/"), std::nullopt);
    EXPECT_EQ(contents.digestOf("d/e/../../empty/..//a"), digestOfText("one"));
    EXPECT_EQ(contents.digestOf("empty"), std::nullopt);
}

TEST_F(ContentsTest, ADirectoryTakesNoPlace)
{
    file("d/a", "one");
    other("link", MemberKind::symlink, "d");
    other("d", MemberKind::directory);
    other("link/", MemberKind::directory);
    other("hard", MemberKind::hardlink, "d");
    EXPECT_EQ(contents.digestOf("link/a"), digestOfText("one"));
    EXPECT_EQ(contents.digestOf("hard/../d/a"), std::nullopt);
}

TEST_F(ContentsTest, KnowsEachOfVeryMany)
{
    constexpr int many = 5000;
    for (int number = 0; number < many; ++number) {
        const std::string name = std::to_string(number);
        file("d/" + name, name);
        other("l/" + name, MemberKind::symlink, "../d/" + name);
    }
    for (int number = 0; number < many; ++number) {
        const std::string name = std::to_string(number);
        ASSERT_EQ(contents.digestOf("d/" + name), digestOfText(name));
        ASSERT_EQ(contents.digestOf("l/" + name), digestOfText(name));
    }
    EXPECT_EQ(contents.digestOf("d/5000"), std::nullopt);
}

TEST_F(ContentsTest, LinksInACircleLeadNowhere)
{
    other("a", MemberKind::symlink, "b");
    other("b", MemberKind::symlink, "./a");
    EXPECT_EQ(contents.digestOf("a"), std::nullopt);
}

TEST_F(ContentsTest, AHardLinkIsTheFileThatItNames)
{
    file("d/a", "one");
    other("b", MemberKind::hardlink, "./d/a");
    file("d/a", "two");
    other("c", MemberKind::hardlink, "missing");
    EXPECT_EQ(contents.digestOf("b"), digestOfText("one"));
    EXPECT_EQ(contents.digestOf("c"), std::nullopt);
}

TEST_F(ContentsTest, KeepsTheTextsThatItWasAskedFor)
{
    file("d/kept", "text");
    file("other", "text");
    EXPECT_EQ(contents.textOf("d/kept"), "text");
    EXPECT_EQ(contents.textOf("kept"), std::nullopt);
    EXPECT_EQ(contents.textOf("other"), std::nullopt);
}

TEST_F(ContentsTest, AHardLinkHasTheTextOfItsFile)
{
    file("kept", "text");
    other("d/kept", MemberKind::hardlink, "./kept");
    EXPECT_EQ(contents.textOf("d/kept"), "text");
    file("other", "more");
    other("kept", MemberKind::hardlink, "other");
    EXPECT_EQ(contents.textOf("kept"), std::nullopt);
    EXPECT_EQ(contents.textOf("d/kept"), "text");
}

TEST_F(ContentsTest, KeepsNoTextThatIsTooLong)
{
    const std::string longest(Contents::longestText, 'x');
    file("kept", longest);
    file("d/kept", longest + "x");
    EXPECT_EQ(contents.textOf("kept"), longest);
    EXPECT_EQ(contents.textOf("d/kept"), std::nullopt);
    EXPECT_EQ(contents.digestOf("d/kept"), digestOfText(longest + "x"));
}

TEST_F(ContentsTest, HolesAreZeros)
{
    constexpr std::string_view piece = "xyz";
    contents.begin({"kept", MemberKind::file, 70000, "", false});
    contents.add(69000, std::as_bytes(std::span(piece)));
    contents.end();
    const std::string whole = std::string(69000, '\0') + "xyz" + std::string(997, '\0');
    EXPECT_EQ(contents.digestOf("kept"), digestOfText(whole));
    EXPECT_EQ(contents.textOf("kept"), whole);
}

TEST_F(ContentsTest, TakesNoMoreThanAMemberHas)
{
    constexpr std::string_view piece = "xyz";
    contents.begin({"kept", MemberKind::file, 2, "", false});
    contents.add(0, std::as_bytes(std::span(piece)));
    contents.add(2, std::as_bytes(std::span(piece)));
    contents.end();
    EXPECT_EQ(contents.textOf("kept"), "xy");
}
