// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/Targets.h"

#include "client/model/Failure.h"
#include "client/targets/Inventory.h"
#include "unit/client/FailureOf.h"

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
        for (const Target& target : parseTargets(words, inventory, input)) {
            result.push_back(target.label);
        }
        return result;
    }

    std::vector<std::string> without(const std::vector<std::string>& excluded)
    {
        std::vector<std::string> result;
        for (const Target& target :
             withoutTargets(parseTargets({"@all"}, inventory, input), excluded, inventory, input)) {
            result.push_back(target.label);
        }
        return result;
    }

    std::vector<std::string> hosts(const std::string& word)
    {
        std::vector<std::string> result;
        for (const Target& target : parseTargets({word}, inventory, input, Networks::expanded)) {
            result.push_back(target.label);
        }
        return result;
    }

    Target only(const std::string& word) { return parseTargets({word}, inventory, input).at(0); }

    Inventory inventory = Inventory::parse("card01 10.0.0.11 # the first\n"
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

TEST_F(TargetsTest, MayBeAListInOneWord)
{
    EXPECT_EQ(labels({"b,card[01,02],a", "@rack,c"}), (Words{"b", "card01", "card02", "a", "10.0.0.40", "c"}));
}

TEST_F(TargetsTest, AreRefusedIfTheyAreNoNames)
{
    for (const char* word : {"card{1,2}", "#", "card*", "card?", "10.0.0.0/8", "a,,b", "a,"}) {
        EXPECT_THROW(labels({word}), Failure) << word;
    }
}

TEST_F(TargetsTest, MayHoldWhatBelongsToRangesBehindABackslash)
{
    EXPECT_EQ(labels({"a\\,b", "c\\[1\\]", "d\\\\", "e\\f"}), (Words{"a,b", "c[1]", "d\\", "e\\f"}));
    EXPECT_EQ(labels({"a\\[[1-2]"}), (Words{"a[1", "a[2"}));
}

TEST_F(TargetsTest, MayComeFromStandardInput)
{
    input.str("card05\ncard[06-07]  @rack\n");
    EXPECT_EQ(labels({"-"}), (Words{"card05", "card06", "card07", "card01", "card02", "10.0.0.40"}));
}

TEST_F(TargetsTest, OfANetworkAreItsHosts)
{
    EXPECT_EQ(hosts("10.0.0.8/30"), (Words{"10.0.0.9", "10.0.0.10"}));
    EXPECT_EQ(hosts("10.0.0.12/29"),
              (Words{"10.0.0.9", "10.0.0.10", "10.0.0.11", "10.0.0.12", "10.0.0.13", "10.0.0.14"}));
    EXPECT_EQ(hosts("10.0.[0-1].0/30"), (Words{"10.0.0.1", "10.0.0.2", "10.0.1.1", "10.0.1.2"}));
    const Words most = hosts("10.0.4.0/22");
    EXPECT_EQ(most.size(), 1022U);
    EXPECT_EQ(most.front(), "10.0.4.1");
    EXPECT_EQ(most.back(), "10.0.7.254");
}

TEST_F(TargetsTest, AreNoNetworkThatIsTooWideOrHasNoHosts)
{
    for (const char* word : {"10.0.0.0/21", "10.0.0.0/0", "10.0.0.0/31", "10.0.0.0/32", "10.0.0.0/", "10.0.0.0/2 4",
                             "10.0.0.0/-1", "10.0.0.0/99999999999", "10.0.0/24", "card/24", "10.0.0.0:6000/24"}) {
        EXPECT_THROW(hosts(word), Failure) << word;
    }
}

TEST_F(TargetsTest, AreNoNetworkWhereCardsAreChanged)
{
    EXPECT_THROW(labels({"10.0.0.0/24"}), Failure);
}

TEST_F(TargetsTest, AreExcludedByNameAddressOrGroup)
{
    EXPECT_EQ(without({"card02,card09"}), (Words{"card01", "10.0.0.40"}));
    EXPECT_EQ(without({"10.0.0.11", "card02"}), (Words{"10.0.0.40", "card09"})); // the inventory knows card01 by it
    EXPECT_EQ(without({"@rack"}), (Words{"card09"}));
    EXPECT_EQ(without({"10.0.0.0/24"}), (Words{"card02", "card09"}));
}

TEST_F(TargetsTest, AreNotExcludedInVain)
{
    EXPECT_THROW(without({"card0l"}), Failure);
    EXPECT_THROW(without({"card01", "10.0.0.12"}), Failure);
    EXPECT_THROW(without({"@all"}), Failure); // nothing is left
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

TEST_F(TargetsTest, GetTheirAddressFromTheInventory)
{
    EXPECT_EQ(only("card01").endpoint, (Endpoint{"10.0.0.11", 50003}));
}

TEST_F(TargetsTest, GetTheirNameFromTheInventory)
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

TEST(InventoryTest, NamesTheLineThatIsWrong)
{
    const Failure failure = failureOf([] { Inventory::parse("card01 10.0.0.11\ncard02 here\n", "groups"); });
    EXPECT_EQ(failure.code, ExitCode::badFile);
    EXPECT_NE(failure.hint.find("groups, line 2"), std::string::npos);
}

TEST(InventoryTest, RefusesANameThatStandsTwice)
{
    const Failure failure = failureOf([] { Inventory::parse("card01 10.0.0.11\n\ncard01 10.0.0.12\n", "groups"); });
    EXPECT_EQ(failure.code, ExitCode::usage);
    EXPECT_EQ(failure.hint, "groups, line 3: card01 has an address already");
}

TEST(InventoryTest, IsNoDirectory)
{
    const Failure failure = failureOf([] { (void)Inventory::load("/"); });
    EXPECT_EQ(failure.code, ExitCode::usage);
    EXPECT_EQ(failure.hint, "/ is a directory, not a file of groups");
}

} // namespace
