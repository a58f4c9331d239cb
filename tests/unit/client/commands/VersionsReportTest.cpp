// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/VersionsReport.h"

#include <gtest/gtest.h>

namespace
{

TEST(VersionsReportTest, ListsTheComponents)
{
    Result result;
    report(Versions{{{"kernel", "6.1"}, {"squashfs", "8.8"}}}, result);
    EXPECT_EQ(result.listName, "components");
    EXPECT_EQ(result.list, (std::vector<Row>{{{"component", "kernel"}, {"version", "6.1"}},
                                             {{"component", "squashfs"}, {"version", "8.8"}}}));
    EXPECT_FALSE(result.malformed);
}

TEST(VersionsReportTest, SaysOfACardThatOneOfItsAnswersWasNoXml)
{
    Result result;
    report(Versions{.components = {}, .malformed = true}, result);
    report(Versions{}, result);
    EXPECT_TRUE(result.malformed);
}

} // namespace
