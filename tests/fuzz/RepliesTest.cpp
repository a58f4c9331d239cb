// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/Replies.h"

#include <gtest/gtest.h>

namespace
{

const SampleHeader question = {.commandId = 3, .sequenceId = 77};

// An answer to it, with a text, in which one byte is another one.
Bytes textReplyWith(std::size_t place, std::uint8_t byte)
{
    Bytes reply = textMessage(replyTo(question, 1), "text");
    reply[place] = byte;
    return reply;
}

} // namespace

TEST(RepliesTest, AcceptsAStatusAndAText)
{
    EXPECT_EQ(objectionToReply(replyTo(question, 2).bytes(), question, handled(1)), "");
    EXPECT_EQ(objectionToReply(textMessage(replyTo(question, 1), "text"), question, handled(1)), "");
    EXPECT_EQ(objectionToReply(replyTo(question, 6).bytes(), question, refusal(6)), "");
}

TEST(RepliesTest, ObjectsToAStatusThatTheRequestCannotGet)
{
    EXPECT_NE(objectionToReply(replyTo(question, 3).bytes(), question, handled(1)), "");
    EXPECT_NE(objectionToReply(replyTo(question, 1).bytes(), question, refusal(5)), "");
}

TEST(RepliesTest, ObjectsToTheReplyToAnotherRequest)
{
    const SampleHeader another = {.commandId = 3, .sequenceId = 78};
    EXPECT_NE(objectionToReply(replyTo(another, 1).bytes(), question, handled(1)), "");
    EXPECT_NE(objectionToReply(question.bytes(), question, handled(1)), "");
}

TEST(RepliesTest, ObjectsToEveryLengthButTheRightOne)
{
    const Bytes reply = textMessage(replyTo(question, 1), "text");
    for (std::size_t length = 0; length < reply.size(); ++length) {
        EXPECT_NE(objectionToReply(std::span(reply).first(length), question, handled(1)), "") << length;
    }
    EXPECT_NE(objectionToReply(reply + Bytes{0}, question, handled(1)), "");
}

TEST(RepliesTest, ObjectsToATextThatIsNotInAnOrdinarySection)
{
    constexpr std::size_t format = 5;
    constexpr std::size_t count = 20;
    constexpr std::size_t letters = 24;
    EXPECT_NE(objectionToReply(textReplyWith(format, 3), question, handled(1)), "");
    EXPECT_NE(objectionToReply(textReplyWith(count, 4), question, handled(1)), "");
    EXPECT_NE(objectionToReply(textReplyWith(letters + 1, 0), question, handled(1)), "");
    EXPECT_NE(objectionToReply(textReplyWith(letters + 4, 'x'), question, handled(1)), "");
}
