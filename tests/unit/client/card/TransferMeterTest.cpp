// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/TransferMeter.h"

#include <gtest/gtest.h>

TEST(TransferMeterTest, TheRateCountsWhatWasAcknowledged)
{
    TransferMeter meter(4000);
    meter.update(2, 1000);
    EXPECT_DOUBLE_EQ(meter.rate(), 500);
}

TEST(TransferMeterTest, TheTimeLeftIsAtTheRateSoFar)
{
    TransferMeter meter(4000);
    meter.update(2, 1000);
    EXPECT_DOUBLE_EQ(meter.secondsLeft(), 6);
}

TEST(TransferMeterTest, NothingIsForetoldBeforeTheFirstBytes)
{
    TransferMeter meter(4000);
    EXPECT_DOUBLE_EQ(meter.rate(), 0);
    EXPECT_DOUBLE_EQ(meter.secondsLeft(), 0);
}

TEST(TransferMeterTest, SilenceCountsFromTheLastProgress)
{
    TransferMeter meter(4000);
    meter.update(2, 1000);
    meter.update(5, 1000);
    EXPECT_DOUBLE_EQ(meter.secondsSilent(), 3);
    meter.update(6, 1001);
    EXPECT_DOUBLE_EQ(meter.secondsSilent(), 0);
}

TEST(TransferMeterTest, CompleteWhenAllIsAcknowledged)
{
    TransferMeter meter(4000);
    meter.update(1, 3999);
    EXPECT_FALSE(meter.isComplete());
    meter.update(2, 4000);
    EXPECT_TRUE(meter.isComplete());
}

TEST(TransferMeterTest, TellsPeopleAmountShareRateAndTimeLeft)
{
    TransferMeter meter(4 * 1024 * 1024);
    meter.update(2, 1024 * 1024);
    EXPECT_EQ(meter.text(), "1.0 of 4.0 MiB, 25 %, 0.5 MiB/s, 6 s left");
}
