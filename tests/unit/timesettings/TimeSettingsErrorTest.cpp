// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "timesettings/TimeSettingsError.h"

#include "support/ErrorText.h"

#include <gtest/gtest.h>

TEST(TimeSettingsErrorTest, CarriesItsTextAndThatOfErrno)
{
    errno = ENOLCK;
    EXPECT_EQ(TimeSettingsError::fromErrno("flock() FAILED: ").what(), errorText("flock() FAILED: ", ENOLCK));
}

TEST(TimeSettingsErrorTest, BuildingALongTextDoesNotChangeTheReason)
{
    const std::string text(4000, 'x');
    errno = ENOLCK;
    EXPECT_EQ(TimeSettingsError::fromErrno(text).what(), errorText(text, ENOLCK));
}
