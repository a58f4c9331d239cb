// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Sections.h"

#include "unit/client/report/Cards.h"

#include <gtest/gtest.h>

namespace
{

std::string versionsOf(std::vector<FleetCard> cards)
{
    return versionsSection(Fleet(std::move(cards))).text();
}

TEST(VersionsSectionTest, AVersionUnlikeTheOthersIsMarkedForTheEyeAndTheEar)
{
    const std::string text =
        versionsOf({cardNamed("card1", "1", 0), cardNamed("card2", "2", 0), cardNamed("card3", "1", 0)});
    EXPECT_TRUE(has(text, "<td class=\"odd\"><strong><span aria-hidden=\"true\">\u2260 </span><span "
                          "class=\"spoken\">differs: </span>2</strong></td>"));
    EXPECT_EQ(countOf(text, "differs: "), 1U);
}

} // namespace
