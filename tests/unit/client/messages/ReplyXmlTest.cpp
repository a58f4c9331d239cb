// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/ReplyXml.h"

#include <gtest/gtest.h>

TEST(ReplyXmlTest, IsTheDocumentOfACard)
{
    const std::optional<XmlElement> root = parseReplyXml("<A B=\"c\"><D/></A>");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "A");
    EXPECT_EQ(root->attribute("B"), "c");
    EXPECT_EQ(root->children.size(), 1U);
}

TEST(ReplyXmlTest, IsNoneWithAnAmpersandWhichACardDoesNotEscape)
{
    EXPECT_FALSE(parseReplyXml("<A B=\"&lt;\"/>"));
    EXPECT_FALSE(parseReplyXml("<A B=\"x & y\"/>"));
}

TEST(ReplyXmlTest, IsNoneIfItIsNotWellFormed)
{
    EXPECT_FALSE(parseReplyXml(""));
    EXPECT_FALSE(parseReplyXml("<A>"));
}
