// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/VersionsDiff.h"

#include "client/model/Failure.h"
#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

using Components = std::vector<Component>;

TEST(DifferingComponentsTest, AreNoneForEqualCards)
{
    const Components card = {{"kernel", "6.1"}, {"base", "1.0"}};
    EXPECT_TRUE(differingComponents({card, card}).empty());
}

TEST(DifferingComponentsTest, HaveAnotherVersionOnSomeCard)
{
    const std::vector<std::string> expected = {"base"};
    EXPECT_EQ(differingComponents({{{"kernel", "6.1"}, {"base", "1.0"}}, {{"kernel", "6.1"}, {"base", "1.1"}}}),
              expected);
}

TEST(DifferingComponentsTest, AreMissingOnSomeCard)
{
    const std::vector<std::string> expected = {"base"};
    EXPECT_EQ(differingComponents({{{"kernel", "6.1"}}, {{"kernel", "6.1"}, {"base", "1.1"}}}), expected);
}

TEST(ExpectedVersionsTest, AreOneALineWithComments)
{
    const Components expected = {{"kernel", "KERN 6.1"}, {"base", "1.0"}};
    EXPECT_EQ(parseExpectedVersions("# cards of 2026\nkernel  KERN 6.1  # new\n\nbase 1.0\n", "f"), expected);
}

TEST(ExpectedVersionsTest, NeedAVersionOnEachLine)
{
    const Failure failure = failureOf([] { (void)parseExpectedVersions("base 1.0\nkernel\n", "f"); });
    EXPECT_EQ(failure.code, ExitCode::badFile);
    EXPECT_NE(failure.hint.find("f, line 2"), std::string::npos);
}

TEST(ExpectedVersionsTest, AreNotNone)
{
    for (const char* text : {"", "\n", "# nothing\n"}) {
        EXPECT_EQ(failureOf([&] { (void)parseExpectedVersions(text, "f"); }).code, ExitCode::usage);
    }
}

TEST(UnmetExpectationsTest, AreOtherAndMissingVersions)
{
    const Components card = {{"kernel", "6.1"}, {"base", "1.0"}};
    const Components unmet = {{"base", "1.1"}, {"boot", "3"}};
    EXPECT_EQ(unmetExpectations(card, {{"kernel", "6.1"}, {"base", "1.1"}, {"boot", "3"}}), unmet);
}

} // namespace
