// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/LinkTree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Place = std::vector<std::string_view>;

TEST(LinkTreeTest, KnowsNoLinkAtFirst)
{
    EXPECT_FALSE(LinkTree().leadsThrough({}));
    EXPECT_FALSE(LinkTree().leadsThrough({"a", "b"}));
}

TEST(LinkTreeTest, LeadsThroughALinkAndToIt)
{
    LinkTree links;
    links.insert({"a", "b"});
    EXPECT_TRUE(links.leadsThrough({"a", "b"}));
    EXPECT_TRUE(links.leadsThrough({"a", "b", "c", "d"}));
}

TEST(LinkTreeTest, TakesNoOtherPlaceForALink)
{
    LinkTree links;
    links.insert({"a", "b"});
    for (const Place& place : {Place{}, {"a"}, {"b"}, {"b", "a"}, {"a", "bb"}, {"a", ""}, {"a", "a", "b"}, {"ab"}}) {
        EXPECT_FALSE(links.leadsThrough(place)) << place.size();
    }
}

TEST(LinkTreeTest, ADirectoryMayBecomeALink)
{
    LinkTree links;
    links.insert({"a", "b"});
    links.insert({"a"});
    EXPECT_TRUE(links.leadsThrough({"a", "c"}));
}

TEST(LinkTreeTest, KnowsEachOfMany)
{
    std::vector<std::string> names(5000);
    LinkTree links;
    for (std::size_t index = 0; index < names.size(); ++index) {
        names[index] = "link" + std::to_string(index);
        links.insert({names[index % 7], names[index]});
    }
    for (std::size_t index = 7; index < names.size(); ++index) {
        EXPECT_TRUE(links.leadsThrough({names[index % 7], names[index]})) << index;
        EXPECT_FALSE(links.leadsThrough({names[(index + 1) % 7], names[index]})) << index;
    }
}

// What a tree of so many links costs, in looks at a node, to be made and then asked for each.
std::uint64_t costOf(std::size_t links)
{
    LinkTree tree;
    std::vector<std::string> names(links);
    for (std::size_t index = 0; index < links; ++index) {
        names[index] = "link" + std::to_string(index);
        tree.insert({names[index % 7], names[index]});
    }
    for (std::size_t index = 0; index < links; ++index) {
        EXPECT_FALSE(tree.leadsThrough({names[(index + 1) % 7], names[index], "x"})) << index;
    }
    return tree.looks();
}

TEST(LinkTreeTest, CostsTwiceAsMuchForTwiceTheLinks)
{
    EXPECT_GT(costOf(4000), 4000U);
    EXPECT_LT(costOf(16000), costOf(4000) * 6); // chance makes some names meet; the square would be 16 times as much
}

} // namespace
