// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/MemberList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace
{

ArchiveMember named(const std::string& path)
{
    return {path, MemberKind::file, 0, "", false};
}

ArchiveMember sized(std::int64_t size)
{
    return {"a", MemberKind::file, size, "", false};
}

void expectKept(const std::vector<ArchiveMember>& members)
{
    MemberList list;
    for (const ArchiveMember& member : members) {
        list.add(member);
    }
    ASSERT_EQ(list.size(), members.size());
    std::size_t index = 0;
    list.forEach([&](const ArchiveMember& kept) {
        const ArchiveMember& member = members.at(index++);
        EXPECT_EQ(kept.path, member.path);
        EXPECT_EQ(kept.kind, member.kind);
        EXPECT_EQ(kept.size, member.size);
        EXPECT_EQ(kept.target, member.target);
        EXPECT_EQ(kept.setsId, member.setsId);
    });
    EXPECT_EQ(index, members.size());
}

TEST(MemberListTest, IsEmptyAtFirst)
{
    EXPECT_TRUE(MemberList().empty());
    expectKept({});
}

TEST(MemberListTest, KeepsAllOfAMember)
{
    expectKept({{"pnr/kernel", MemberKind::file, 5, "", true},
                {"pnr", MemberKind::directory, 0, "", false},
                {"pnr/link", MemberKind::symlink, 0, "kernel", false},
                {"pnr/hard", MemberKind::hardlink, 0, "pnr/kernel", false},
                {"pipe", MemberKind::special, 0, "", false}});
}

TEST(MemberListTest, KeepsPathsThatAreAlike)
{
    expectKept({named("a/b/c"), named("a/b/c"), named("a/b/cd"), named("a/b"), named(""), named("b/b"), named("a")});
}

TEST(MemberListTest, KeepsWhatIsLong)
{
    for (const std::size_t length : {127U, 128U, 129U, 16383U, 16384U, 100000U}) {
        const std::string start(length, 'a');
        expectKept({named(start), named(start + std::string(length, 'b')), named("c")});
    }
}

TEST(MemberListTest, KeepsEverySize)
{
    expectKept({sized(127), sized(128), sized(INT64_MAX), sized(-1), sized(INT64_MIN)});
}

} // namespace
