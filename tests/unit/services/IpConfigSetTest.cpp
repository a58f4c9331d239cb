// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/services/IpConfigSamples.h"
#include "unit/services/TarvelUdpFixture.h"

namespace
{

constexpr SampleHeader ipConfigSet = {.commandId = 4};

class IpConfigSetTest : public TarvelUdpTest
{
protected:
    IpConfigSetTest()
    {
        uci.set(firstProto, "static");
        uci.set(secondProto, "dhcp");
    }

    const CapturedLog::Line start = {LOG_INFO, "Configuring network interfaces"};
};

} // namespace

TEST_F(IpConfigSetTest, AnswersSuccessToAllBeforeItRestartsTheNetwork)
{
    EXPECT_EQ(serve(textRequest(4, configuration(one + two))), 0);
    const std::vector<std::string> order = orderOf({"system", "sendto"});
    EXPECT_EQ(std::vector<std::string>(order.end() - 3, order.end()),
              (std::vector<std::string>{"system: uci -q commit ",
                                        "sendto: 20 255.255.255.255:" + std::to_string(requester.port()),
                                        "system: /etc/init.d/network restart"}));
    expectBroadcast(ipConfigSet, 1);
}

TEST_F(IpConfigSetTest, LogsOneLineOnSuccess)
{
    serve(textRequest(4, configuration(one + two)));
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{start}));
}

TEST_F(IpConfigSetTest, RestartsTheNetworkForARootWithoutInterfaces)
{
    EXPECT_EQ(serve(textRequest(4, "<IpConfiguration From=\"mgmt\" To=\"card7\"/>")), 0);
    EXPECT_EQ(shell.commands(), joined({readBack, commit, restart}));
    expectBroadcast(ipConfigSet, 1);
}

TEST_F(IpConfigSetTest, RestartsTheNetworkForAnotherRoot)
{
    EXPECT_EQ(serve(textRequest(4, "<RebootCard From=\"mgmt\" To=\"card7\"/>")), 0);
    EXPECT_EQ(shell.commands(), joined({readBack, commit, restart}));
    expectBroadcast(ipConfigSet, 1);
}

TEST_F(IpConfigSetTest, AnswersAFailureWithStatus2AndRestartsNothing)
{
    EXPECT_EQ(serve(textRequest(4, configuration("<Interface/>"))), -1);
    EXPECT_EQ(logged().back(), (CapturedLog::Line{LOG_WARNING, "Configuring network interfaces failed"}));
    EXPECT_EQ(shell.commands(), joined({readBack, revert}));
    expectBroadcast(ipConfigSet, 2);
}

TEST_F(IpConfigSetTest, IsRefusedIfItLeavesNoInterface)
{
    uci.set(firstProto, "none");
    uci.set(secondProto, "none");
    EXPECT_EQ(serve(textRequest(4, configuration("<Interface Name=\"VemkEth1\" Mode=\"Disabled\"/>"))), -1);
    EXPECT_EQ(log.infos().back(), "Disabling both network interfaces is forbidden");
    EXPECT_EQ(shell.commands().back(), "uci -q revert network");
    expectBroadcast(ipConfigSet, 2);
}

TEST_F(IpConfigSetTest, RestartsTheNetworkEvenIfTheReplyCannotBeSent)
{
    failNext("sendto", ENETUNREACH);
    EXPECT_EQ(serve(textRequest(4, configuration(one))), 0);
    EXPECT_EQ(shell.commands().back(), restart.front());
}

TEST_F(IpConfigSetTest, LogsAFailedRestartAndKeepsItsSuccess)
{
    shell.answer(restart.front(), exitStatus(1));
    EXPECT_EQ(serve(textRequest(4, configuration(one + two))), 0);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{start, {LOG_WARNING, "/etc/init.d/network restart FAILED"}}));
    expectBroadcast(ipConfigSet, 1);
}

TEST_F(IpConfigSetTest, LogsARestartThatCouldNotBeRunOnTwoLines)
{
    shell.respondWith([](std::string_view command) -> std::optional<FakeSystem::Answer> {
        if (command == restart.front()) {
            return FakeSystem::Answer{-1, {}, ENOMEM};
        }
        return FakeSystem::Answer{0, "static\n"};
    });
    EXPECT_EQ(serve(textRequest(4, configuration(one + two))), 0);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("system() failed: ") + std::strerror(ENOMEM),
                                                        "/etc/init.d/network restart FAILED"}));
}

TEST_F(IpConfigSetTest, TakesARestartThatASignalKilledForASuccess)
{
    shell.answer(restart.front(), killedBy(15));
    serve(textRequest(4, configuration(one + two)));
    EXPECT_TRUE(log.warnings().empty());
}

TEST_F(IpConfigSetTest, IsRefusedWithoutASection)
{
    EXPECT_EQ(serve(ipConfigSet.bytes()), -1);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{
                            {LOG_WARNING, "IPConfigSet message should only contain a 8-bit section!"}}));
    EXPECT_NE(out.find("Command ID       (16bit): 0x4\n"), std::string::npos);
    expectBroadcast(ipConfigSet, 2);
}

TEST_F(IpConfigSetTest, DoesNothingForAnotherCard)
{
    EXPECT_EQ(serve(textRequest(4, "<IpConfiguration From=\"mgmt\" To=\"card8\">" + one + "</IpConfiguration>")), 0);
    EXPECT_TRUE(shell.commands().empty());
    expectNoReply();
}
