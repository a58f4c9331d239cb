// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/LastHeard.h"

#include "unit/client/card/OwnStateFolder.h"

#include <gtest/gtest.h>

namespace
{

TEST(LastHeardTest, KnowsTheLastPlaceOfEachName)
{
    LastHeard known;
    known.note("card 1", {"10.0.0.11", 100, "lan0"});
    known.note("card 1", {"10.0.0.12", 200, "lan0"});
    const LastHeard again = LastHeard::parse(known.text());
    ASSERT_TRUE(again.of("card 1"));
    EXPECT_EQ(again.of("card 1")->address, "10.0.0.12");
    EXPECT_EQ(again.of("card 1")->moment, 200);
    EXPECT_EQ(again.of("card 1")->interface, "lan0");
    EXPECT_FALSE(again.of("card"));
}

TEST(LastHeardTest, KnowsNoInterfaceFromAFileWithoutAny)
{
    const LastHeard known = LastHeard::parse("card1 10.0.0.11 100\ncard2 10.0.0.12 200 lan1\n");
    ASSERT_TRUE(known.of("card1") && known.of("card2"));
    EXPECT_EQ(known.of("card1")->interface, "");
    EXPECT_EQ(known.of("card2")->interface, "lan1");
    EXPECT_EQ(known.text(), "card1 10.0.0.11 100\ncard2 10.0.0.12 200 lan1\n");
}

TEST(LastHeardTest, TakesWhatCanBeReadOfABrokenFile)
{
    EXPECT_TRUE(LastHeard::parse("card1 10.0.0.11 100\ncard2 10.0").of("card1"));
    EXPECT_FALSE(LastHeard::parse("card1 10.0.0.11 100\ncard2 10.0").of("card2"));
}

using SavedLastHeardTest = OwnStateFolder;

TEST_F(SavedLastHeardTest, ForgetsNothingThatAnotherRunHasSavedMeanwhile)
{
    LastHeard one = LastHeard::load();
    LastHeard other = LastHeard::load();
    one.note("card1", {"10.0.0.11", 100, "lan0"});
    one.note("card2", {"10.0.0.12", 100, "lan0"});
    other.note("card2", {"10.0.0.99", 90, "lan0"});
    other.note("card3", {"10.0.0.13", 100, "lan0"});
    one.save();
    other.save();
    const LastHeard saved = LastHeard::load();
    EXPECT_EQ(saved.of("card1").value().address, "10.0.0.11");
    EXPECT_EQ(saved.of("card2").value().address, "10.0.0.12"); // the later of the two
    EXPECT_EQ(saved.of("card3").value().address, "10.0.0.13");
}

TEST(LastHeardTest, TellsAnAgeInOneUnit)
{
    EXPECT_EQ(ageText(-5), "0 s");
    EXPECT_EQ(ageText(119), "119 s");
    EXPECT_EQ(ageText(120), "2 min");
    EXPECT_EQ(ageText(7200), "2 h");
    EXPECT_EQ(ageText(172800), "2 days");
}

} // namespace
