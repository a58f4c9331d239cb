// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/PrivateFolder.h"

#include "../FailureOf.h"
#include "ProgramsFixture.h"

namespace
{

using PrivateFolderTest = ProgramsFixture;

} // namespace

TEST_F(PrivateFolderTest, IsForThisUserAloneAndGoneAfterwards)
{
    const Environment temporary("TMPDIR", directory);
    std::string path;
    {
        const PrivateFolder folder;
        path = folder.path("");
        EXPECT_TRUE(path.starts_with(directory + "/tarvelctl-")) << path;
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_all);
        folder.write("file", std::string_view("a\0b", 3));
        EXPECT_EQ(std::filesystem::file_size(folder.path("file")), 3U);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(PrivateFolderTest, TellsWhyThereCanBeNone)
{
    const Environment temporary("TMPDIR", directory + "/missing");
    const Failure failure = failureOf([] { const PrivateFolder folder; });
    EXPECT_EQ(failure.code, ExitCode::badFile);
    EXPECT_TRUE(failure.hint.starts_with("cannot make a folder in " + directory + "/missing: ")) << failure.hint;
}

TEST_F(PrivateFolderTest, TellsWhatCannotBeWritten)
{
    const PrivateFolder folder;
    EXPECT_EQ(failureOf([&] { folder.write("missing/file", ""); }).code, ExitCode::badFile);
}
