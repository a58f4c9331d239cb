// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/OptionSet.h"

#include <gtest/gtest.h>

TEST(OptionSetTest, LetsAnOptionBeCompletedBehindThoseAddedLater)
{
    OptionSet options;
    bool given = false;
    OptionSpec& first = options.flag("--first", given, "the first");
    for (int count = 0; count < 100; ++count) {
        options.flag("--other", given, "another");
    }
    first.required = true;
    EXPECT_EQ(&first, &options.specs().front());
    EXPECT_TRUE(options.specs().front().required);
}
