// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/decode/Dissection.h"

#include "client/output/Lines.h"
#include "client/wire/Frame.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace
{

Bytes reply(CommandId command, std::string_view text)
{
    Request message = textRequest(command, std::string(text));
    message.header.commandId |= replyFlag;
    message.header.status = static_cast<std::uint8_t>(Status::success);
    return encode(message);
}

std::string cell(const Dissection& dissection, std::string_view field, const char* column)
{
    for (const Row& row : dissection.result.list) {
        if (textOf(cellOf(row, "field")) == field) {
            return textOf(cellOf(row, column));
        }
    }
    return "(no such field)";
}

TEST(DissectionTest, NamesTheCommandOfARequest)
{
    const Dissection dissection = dissect(encode(bareRequest(CommandId::versions)));
    EXPECT_EQ(cell(dissection, "command", "value"), "1");
    EXPECT_EQ(cell(dissection, "command", "meaning"), "versions report, request");
}

TEST(DissectionTest, TellsAReplyFromItsFlag)
{
    EXPECT_EQ(cell(dissect(reply(CommandId::ipConfigGet, "")), "command", "meaning"), "IP configuration get, reply");
}

TEST(DissectionTest, NamesTheStatusOfAReply)
{
    EXPECT_EQ(cell(dissect(reply(CommandId::reboot, "")), "status", "meaning"), "success");
}

TEST(DissectionTest, DoesNotReadAStatusIntoARequest)
{
    EXPECT_EQ(cell(dissect(encode(bareRequest(CommandId::reboot))), "status", "meaning"), "not looked at in a request");
}

TEST(DissectionTest, ShowsTheTextWithoutItsNul)
{
    const Dissection dissection = dissect(reply(CommandId::versions, "<Versions/>"));
    EXPECT_EQ(cell(dissection, "text", "value"), "<Versions/>");
    EXPECT_EQ(cell(dissection, "text", "meaning"), "XML");
    EXPECT_EQ(cell(dissection, "8-bit section count", "value"), "12");
}

TEST(DissectionTest, TellsATextThatIsNoXml)
{
    EXPECT_EQ(cell(dissect(reply(CommandId::versions, "<Versions Id=\"\"\"/>")), "text", "meaning"), "no valid XML");
}

TEST(DissectionTest, TellsThatTheNulIsMissing)
{
    Bytes message = reply(CommandId::versions, "<Versions/>");
    message.back() = static_cast<std::byte>(' ');
    EXPECT_EQ(cell(dissect(message), "text", "meaning"), "XML, not ended by a NUL");
}

TEST(DissectionTest, ShowsWhatIsNoTextAsBytes)
{
    const Dissection dissection = dissect(reply(CommandId::firmwareUpload, "\x1F\x8B\x08"));
    EXPECT_EQ(cell(dissection, "8-bit section", "value"), "1f8b0800");
}

TEST(DissectionTest, GivesEachFieldItsOffset)
{
    const Dissection dissection = dissect(reply(CommandId::versions, "x"), 100);
    EXPECT_EQ(cell(dissection, "command", "offset"), "108");
    EXPECT_EQ(cell(dissection, "text", "offset"), "124");
}

TEST(DissectionTest, TakesSectionsInTheOrderInWhichTheyTravel)
{
    Request message = bareRequest(CommandId::versions);
    message.header.messageFormat = section64Bit | section16Bit;
    message.payload = {std::byte{8}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, std::byte{2}, {}, {}, {}, {}, {}};
    const Dissection dissection = dissect(encode(message));
    EXPECT_TRUE(dissection.result.ok());
    EXPECT_EQ(cell(dissection, "64-bit section count", "value"), "8");
    EXPECT_EQ(cell(dissection, "16-bit section count", "value"), "2");
}

TEST(DissectionTest, LeavesTheNextMessageAlone)
{
    Bytes two = reply(CommandId::versions, "one");
    const std::size_t length = two.size();
    const Bytes second = encode(bareRequest(CommandId::versions));
    two.insert(two.end(), second.begin(), second.end());
    EXPECT_EQ(dissect(two).length, length);
}

TEST(DissectionTest, RefusesBytesThatAreNoHeader)
{
    const Dissection dissection = dissect(Bytes(19));
    EXPECT_EQ(dissection.result.code, ExitCode::protocol);
    EXPECT_EQ(dissection.result.hint, "19 bytes are no message: the header alone has 20");
}

TEST(DissectionTest, RefusesAnotherStartPattern)
{
    const Dissection dissection = dissect(Bytes(20));
    EXPECT_EQ(dissection.result.code, ExitCode::protocol);
    EXPECT_EQ(cell(dissection, "start pattern", "meaning"), "should be 0xff9ac381");
}

TEST(DissectionTest, TellsHowMuchOfThePayloadIsMissing)
{
    Bytes message = reply(CommandId::versions, "<Versions/>");
    message.resize(30);
    EXPECT_EQ(dissect(message).result.hint, "the header announces 16 bytes of payload, but only 10 are there");
}

TEST(DissectionTest, TellsASectionLongerThanThePayload)
{
    Bytes message = reply(CommandId::versions, "x");
    message[20] = std::byte{9};
    EXPECT_EQ(dissect(message).result.hint, "the 8-bit section announces 9 bytes, but only 2 are there");
}

TEST(DissectionTest, TellsBytesThatAreInNoSection)
{
    Bytes message = reply(CommandId::versions, "x");
    message[5] = std::byte{0};
    EXPECT_EQ(dissect(message).result.hint, "6 bytes of the payload are in no section");
}

TEST(DissectionTest, UsesUpAnyBytesWithoutReadingBeyondThem)
{
    std::mt19937 random(20260304); // the same bytes each time
    const Bytes model = reply(CommandId::versions, "<Versions><Component/></Versions>");
    for (int round = 0; round < 5000; ++round) {
        Bytes message(model.begin(), model.begin() + static_cast<long>(random() % (model.size() + 1)));
        for (auto changes = random() % 6; changes > 0 && !message.empty(); --changes) {
            message[random() % message.size()] = static_cast<std::byte>(random() % 256);
        }
        message.shrink_to_fit(); // so that a sanitizer sees a byte too many
        const Dissection dissection = dissect(message);
        ASSERT_LE(dissection.length, message.size());
        ASSERT_TRUE(dissection.length > 0 || message.empty());
    }
}

} // namespace
