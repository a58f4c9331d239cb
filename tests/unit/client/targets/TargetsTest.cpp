// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/Targets.h"

#include "client/model/Failure.h"
#include "client/targets/CardBook.h"

#include <gtest/gtest.h>
#include <sstream>

namespace
{

class TargetsTest : public testing::Test
{
protected:
    std::vector<std::string> labels(const std::vector<std::string>& words)
    {
        std::vector<std::string> result;
        for (const Target& target : parseTargets(words, book, input)) {
            result.push_back(target.label);
        }
        return result;
    }

    Target only(const std::string& word) { return parseTargets({word}, book, input).at(0); }

    CardBook book = CardBook::parse("card01 10.0.0.11 # the first\n"
                                    "@rack card[01-02] 10.0.0.40\n"
                                    "@all @rack card09\n"
                                    "@loop @loop\n",
                                    "groups");
    std::istringstream input;
};

using Words = std::vector<std::string>;

TEST_F(TargetsTest, AreKeptInOrderAndOnce)
{
    EXPECT_EQ(labels({"b", "a", "b"}), (Words{"b", "a"}));
}

TEST_F(TargetsTest, OfAGroupAreItsMembers)
{
    EXPECT_EQ(labels({"@all"}), (Words{"card01", "card02", "10.0.0.40", "card09"}));
}

TEST_F(TargetsTest, MayComeFromStandardInput)
{
    input.str("card05\ncard[06-07]  @rack\n");
    EXPECT_EQ(labels({"-"}), (Words{"card05", "card06", "card07", "card01", "card02", "10.0.0.40"}));
}

TEST_F(TargetsTest, HaveAnAddressIfTheyAreOne)
{
    EXPECT_EQ(only("10.0.0.99").endpoint, (Endpoint{"10.0.0.99", 50003}));
    EXPECT_EQ(only("127.0.0.1:6000").endpoint, (Endpoint{"127.0.0.1", 6000}));
    EXPECT_TRUE(only("10.0.0.99").name.empty());
}

TEST_F(TargetsTest, HaveNoAddressIfOnlyTheNameIsKnown)
{
    EXPECT_FALSE(only("card02").endpoint);
    EXPECT_EQ(only("card02").name, "card02");
}

TEST_F(TargetsTest, GetTheirAddressFromTheBook)
{
    EXPECT_EQ(only("card01").endpoint, (Endpoint{"10.0.0.11", 50003}));
}

TEST_F(TargetsTest, GetTheirNameFromTheBook)
{
    EXPECT_EQ(only("10.0.0.11").name, "card01");
}

TEST_F(TargetsTest, AreRefusedForAnUnknownGroup)
{
    EXPECT_THROW(labels({"@nobody"}), Failure);
}

TEST_F(TargetsTest, AreRefusedForAGroupThatHoldsItself)
{
    EXPECT_THROW(labels({"@loop"}), Failure);
}

TEST_F(TargetsTest, AreNeverNone)
{
    EXPECT_THROW(labels({"-"}), Failure);
    EXPECT_THROW(labels({""}), Failure);
}

TEST(CardBook, NamesTheLineThatIsWrong)
{
    try {
        CardBook::parse("card01 10.0.0.11\ncard02 here\n", "groups");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::badFile);
        EXPECT_NE(failure.hint.find("groups, line 2"), std::string::npos);
    }
}

} // namespace
