// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/ArchiveCheck.h"
#include "support/SystemTest.h"

#include <cerrno>
#include <syslog.h>
#include <utility>

namespace
{

constexpr const char* namesQuestion = "{ tar -tzf a.tar.gz 2>/dev/null && echo; } | head -c 1048577";
constexpr const char* detailsQuestion = "{ tar -tvzf a.tar.gz 2>/dev/null && echo; } | head -c 1048577";

class ArchiveCheckTest : public SystemTest
{
protected:
    int check(const std::string& names, const std::string& details)
    {
        shell.answer(namesQuestion, 0, names + "\n");
        shell.answer(detailsQuestion, 0, details + "\n");
        return checkArchive("a.tar.gz", files);
    }

    void expectRefusal(const std::string& reason)
    {
        EXPECT_EQ(log.lines(), (Lines{{LOG_WARNING, "a.tar.gz " + reason + ", it is not unpacked"}}));
    }

    Texts files;
};

} // namespace

TEST_F(ArchiveCheckTest, AsksTarTwiceAndForNoMoreThanFits)
{
    EXPECT_EQ(check("", ""), 0);
    EXPECT_EQ(shell.commands(), (Texts{namesQuestion, detailsQuestion}));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ArchiveCheckTest, TellsTheFilesOfAnArchive)
{
    EXPECT_EQ(check("d/\nd/f\n", "drwxr-xr-x 0/0 0 2026-11-22 14:51 d/\n-rw-r--r-- 0/0 9 2026-11-22 14:51 d/f\n"), 0);
    EXPECT_EQ(files, Texts{"d/f"});
}

TEST_F(ArchiveCheckTest, SaysWhyNot)
{
    EXPECT_EQ(check("f\n", "-rwsr-xr-x 0/0 9 2026-11-22 14:51 f\n"), -1);
    expectRefusal("has a member f that has the setuid or setgid bit");
}

TEST_F(ArchiveCheckTest, RefusesWhatTarCannotReadToItsEnd)
{
    const std::string details = "-rw-r--r-- 0/0 9 2026-11-22 14:51 f\n";
    for (const auto& [names, of] : {std::pair<std::string, std::string>{"f\n", details + "\n"},
                                    {"f\n\n", details},
                                    {"", "\n"},
                                    {"\n", ""},
                                    {"", ""}}) {
        shell.answer(namesQuestion, 0, names);
        shell.answer(detailsQuestion, 0, of);
        log.clear();
        EXPECT_EQ(checkArchive("a.tar.gz", files), -1);
        expectRefusal("cannot be listed");
    }
}

TEST_F(ArchiveCheckTest, RefusesAnArchiveThatNoShellCouldBeRunFor)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(checkArchive("a.tar.gz", files), -1);
    expectRefusal("cannot be listed");
}

TEST_F(ArchiveCheckTest, RefusesAListingOfMoreThanAMegabyte)
{
    EXPECT_EQ(check(std::string(1048577, 'x'), ""), -1);
    expectRefusal("has too many members");
}

TEST_F(ArchiveCheckTest, RefusesDetailsOfMoreThanAMegabyte)
{
    EXPECT_EQ(check("", std::string(1048577, 'x')), -1);
    expectRefusal("has too many members");
}
