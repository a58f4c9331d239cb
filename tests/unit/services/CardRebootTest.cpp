// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/services/TarvelUdpFixture.h"

#include <new>

namespace
{

using CardRebootTest = TarvelUdpTest;

constexpr SampleHeader cardReboot = {.commandId = 9};
constexpr const char* rebootCommand = "reboot -d 2 &";
const std::string rebootText = "<RebootCard From=\"mgmt\" To=\"card7\"/>";
const CapturedLog::Line announcement = {LOG_INFO, "***** WARNING: Card will reboot in a few seconds *****"};

} // namespace

TEST_F(CardRebootTest, StartsADelayedRebootInTheBackground)
{
    EXPECT_EQ(serve(textRequest(9, rebootText)), 0);
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{rebootCommand}));
}

TEST_F(CardRebootTest, IsAnnouncedAtTheInformationalLevel)
{
    serve(textRequest(9, rebootText));
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{announcement}));
}

TEST_F(CardRebootTest, IsAnsweredToAllWithSuccess)
{
    serve(textRequest(9, rebootText));
    expectBroadcast(cardReboot, 1);
}

TEST_F(CardRebootTest, IsStartedBeforeTheAnswer)
{
    serve(textRequest(9, rebootText));
    EXPECT_EQ(orderOf({"system", "sendto"}),
              (std::vector<std::string>{"system: reboot -d 2 &",
                                        "sendto: 20 255.255.255.255:" + std::to_string(requester.port())}));
}

TEST_F(CardRebootTest, SucceedsEvenIfTheAnswerCannotBeSent)
{
    failNext("sendto", ENETUNREACH);
    EXPECT_EQ(serve(textRequest(9, rebootText)), 0);
}

TEST_F(CardRebootTest, AcceptsTheOtherRoot)
{
    EXPECT_EQ(serve(textRequest(9, "<IpConfiguration From=\"mgmt\" To=\"card7\"/>")), 0);
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{rebootCommand}));
}

TEST_F(CardRebootTest, IgnoresChildElements)
{
    EXPECT_EQ(serve(textRequest(9, "<RebootCard From=\"mgmt\" To=\"card7\"><Now/></RebootCard>")), 0);
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{rebootCommand}));
}

TEST_F(CardRebootTest, HappensNotForAnotherCardsName)
{
    EXPECT_EQ(serve(textRequest(9, "<RebootCard From=\"mgmt\" To=\"card8\"/>")), 0);
    EXPECT_TRUE(shell.commands().empty());
    EXPECT_EQ(logged(),
              (std::vector<CapturedLog::Line>{{LOG_INFO, "Message is for \"card8\" not for me \"card7\", drop it"}}));
    expectNoReply();
}

TEST_F(CardRebootTest, IsRefusedWithoutASection)
{
    EXPECT_EQ(serve(cardReboot.bytes()), -1);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{
                            {LOG_WARNING, "RebootCard message should only contain a 8-bit section!"}}));
    EXPECT_NE(out.find("Command ID       (16bit): 0x9\n"), std::string::npos);
    EXPECT_TRUE(shell.commands().empty());
    expectBroadcast(cardReboot, 2);
}

TEST_F(CardRebootTest, IsRefusedWithoutASender)
{
    EXPECT_EQ(serve(textRequest(9, "<RebootCard To=\"card7\"/>")), -1);
    EXPECT_TRUE(shell.commands().empty());
    expectBroadcast(cardReboot, 2);
}

TEST_F(CardRebootTest, NeverFollowsFromTheBytesOfAnEarlierRequest)
{
    serve(textRequest(9, rebootText));
    forgetCalls();
    const std::uint32_t payload = static_cast<std::uint32_t>(rebootText.size()) + 5;
    EXPECT_EQ(serve(SampleHeader{.messageFormat = 1, .commandId = 9, .payloadLength = payload}.bytes()), -1);
    EXPECT_TRUE(shell.commands().empty());
}

TEST_F(CardRebootTest, FailsIfTheShellSaysSo)
{
    shell.answer(rebootCommand, exitStatus(1));
    EXPECT_EQ(serve(textRequest(9, rebootText)), -1);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{announcement, {LOG_WARNING, "reboot command failed"}}));
    expectBroadcast(cardReboot, 2);
}

TEST_F(CardRebootTest, FailsIfNoShellCanBeRun)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(serve(textRequest(9, rebootText)), -1);
    EXPECT_EQ(logged().back(), (CapturedLog::Line{LOG_WARNING, "reboot command failed"}));
    EXPECT_EQ(err, std::string("system() FAILED: ") + std::strerror(ENOMEM) + "\n");
    expectBroadcast(cardReboot, 2);
}

TEST_F(CardRebootTest, FailsIfAnExceptionIsThrown)
{
    shell.respondWith([](std::string_view) -> std::optional<FakeSystem::Answer> { throw std::bad_alloc(); });
    EXPECT_EQ(serve(textRequest(9, rebootText)), -1);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{announcement, {LOG_WARNING, "reboot command failed"}}));
    expectBroadcast(cardReboot, 2);
}
