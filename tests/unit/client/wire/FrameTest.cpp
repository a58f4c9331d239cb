// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Frame.h"

#include "client/wire/HexText.h"
#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

Reply replyTo(const Request& request)
{
    Reply reply;
    reply.header = request.header;
    reply.header.commandId |= replyFlag;
    reply.header.status = static_cast<std::uint8_t>(Status::success);
    return reply;
}

Reply textReply(Bytes section)
{
    Reply reply = replyTo(bareRequest(CommandId::versions));
    reply.header.messageFormat = section8Bit;
    reply.payload = std::move(section);
    return reply;
}

std::string_view categoryOfText(const Bytes& section)
{
    return wordOf(failureOf([&] { (void)textOf(textReply(section)); }).category);
}

ExitCode codeOf(int status)
{
    Reply reply = replyTo(bareRequest(CommandId::versions));
    reply.header.status = static_cast<std::uint8_t>(status);
    return failureOf([&] { checkStatus(reply.header); }).code;
}

TEST(RequestTest, OfAVersionsReportHasNoPayload)
{
    Request request = bareRequest(CommandId::versions);
    request.header.sequenceId = 0x0A0B0C0D;
    EXPECT_EQ(hexText(encode(request)), "81c39aff 01000504 01000001 0d0c0b0a 00000000");
}

TEST(RequestTest, WithATextCarriesItsCountAndNul)
{
    Request request = textRequest(CommandId::reboot, "<a/>");
    request.header.sequenceId = 1;
    EXPECT_EQ(hexText(encode(request)), "81c39aff 01010504 09000001 01000000 09000000 05000000 3c612f3e 00");
}

TEST(RequestTest, HasASequenceNumberOfItsOwn)
{
    EXPECT_NE(bareRequest(CommandId::versions).header.sequenceId, bareRequest(CommandId::versions).header.sequenceId);
}

TEST(ReplyTest, AnswersTheRequestWithItsSequenceNumber)
{
    const Request request = bareRequest(CommandId::versions);
    EXPECT_TRUE(answers(replyTo(request).header, request));
    EXPECT_FALSE(answers(replyTo(bareRequest(CommandId::versions)).header, request));
    EXPECT_FALSE(answers(request.header, request)) << "a request is no reply";
}

TEST(ReplyTest, IsRefusedIfItAnnouncesTooMuch)
{
    const Request request = bareRequest(CommandId::versions);
    Reply reply = replyTo(request);
    reply.header.payloadLength = longestReplyPayload + 1;
    EXPECT_THROW(checkReplyHeader(reply.header, request), Failure);
}

TEST(ReplyTest, IsRefusedWithAnotherStartPattern)
{
    const Request request = bareRequest(CommandId::versions);
    Reply reply = replyTo(request);
    reply.header.startPattern = 0x48545450;
    EXPECT_THROW(checkReplyHeader(reply.header, request), Failure);
}

TEST(ReplyTextTest, IsWhatStandsBeforeTheNul)
{
    EXPECT_EQ(textOf(textReply(textSection("hello"))), "hello");
    EXPECT_EQ(textOf(textReply(textSection(""))), "");
}

TEST(ReplyTextTest, IsRefusedIfItsCountLies)
{
    Bytes section = textSection("hello");
    section[0] = std::byte{7};
    EXPECT_EQ(categoryOfText(section), "garbage");
    section[0] = std::byte{5};
    EXPECT_EQ(categoryOfText(section), "garbage");
    section[3] = std::byte{0xFF};
    EXPECT_EQ(categoryOfText(section), "garbage");
}

TEST(ReplyTextTest, IsRefusedWithoutOrWithAnInnerNul)
{
    Bytes section = textSection("hello");
    section.back() = std::byte{'x'};
    EXPECT_EQ(categoryOfText(section), "garbage");
    section = textSection("hello");
    section[6] = std::byte{0};
    EXPECT_EQ(categoryOfText(section), "garbage");
}

TEST(ReplyTextTest, IsRefusedIfItIsTooShortForACount)
{
    for (std::size_t size = 0; size < 5; ++size) {
        EXPECT_EQ(categoryOfText(Bytes(size)), "garbage") << size;
    }
}

TEST(ReplyTextTest, IsRefusedInAnotherFormat)
{
    Reply reply = textReply(textSection("hello"));
    reply.header.messageFormat = section8Bit | section16Bit;
    EXPECT_THROW((void)textOf(reply), Failure);
}

TEST(ReplyStatusTest, DecidesTheExitCode)
{
    EXPECT_EQ(codeOf(1), ExitCode::ok);
    EXPECT_EQ(codeOf(2), ExitCode::refusedByCard);
    for (const int status : {3, 4, 5, 6, 0, 7, 255}) {
        EXPECT_EQ(codeOf(status), ExitCode::protocol) << status;
    }
}

} // namespace
