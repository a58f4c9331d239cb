// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/IpConfigGet.h"
#include "unit/services/TarvelUdpFixture.h"

namespace
{

constexpr SampleHeader ipConfigGet = {.commandId = 3};
const std::string ipConfigGetText = "<IpConfiguration From=\"mgmt\" To=\"card7\"/>";
const std::string firstSection = "network.lanvemt2eth1";
const std::string secondSection = "network.lanvemt2eth2";
const CapturedLog::Line start = {LOG_INFO, "Retrieving current IP configuration"};

class InterfaceConfigTest : public SystemTest
{
protected:
    void expectAppended(const std::string& expected, const char* identifier = "vemEth1")
    {
        std::string text = "before";
        EXPECT_EQ(appendInterfaceConfig(identifier, text), 0);
        EXPECT_EQ(text, "before" + expected);
    }

    void expectFailure(const std::vector<CapturedLog::Line>& lines, const char* identifier = "vemEth1")
    {
        std::string text;
        EXPECT_EQ(appendInterfaceConfig(identifier, text), -1);
        EXPECT_EQ(log.lines(), lines);
    }

    void setStatic(const std::string& section)
    {
        uci.set(section + ".proto", "static");
        uci.set(section + ".ipaddr", "192.168.1.10");
        uci.set(section + ".netmask", "255.255.255.0");
        uci.set(section + ".gateway", "192.168.1.1");
    }
};

class IpConfigGetTest : public TarvelUdpTest
{
protected:
    IpConfigGetTest()
    {
        uci.set(firstSection + ".proto", "dhcp");
        uci.set(secondSection + ".proto", "none");
    }
};

} // namespace

TEST_F(InterfaceConfigTest, HasAllAddressesInStaticMode)
{
    setStatic(firstSection);
    expectAppended("<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"192.168.1.10\" "
                   "Netmask=\"255.255.255.0\" Gateway=\"192.168.1.1\"/>");
}

TEST_F(InterfaceConfigTest, ReadsTheSectionOfTheSecondInterface)
{
    setStatic(secondSection);
    expectAppended("<Interface Name=\"VemkEth2\" Mode=\"Static\" Address=\"192.168.1.10\" "
                   "Netmask=\"255.255.255.0\" Gateway=\"192.168.1.1\"/>",
                   "vemEth2");
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{"uci -q get network.lanvemt2eth2.proto > /tmp/uci.tmp",
                                                          "uci -q get network.lanvemt2eth2.ipaddr > /tmp/uci.tmp",
                                                          "uci -q get network.lanvemt2eth2.netmask > /tmp/uci.tmp",
                                                          "uci -q get network.lanvemt2eth2.gateway > /tmp/uci.tmp"}));
}

TEST_F(InterfaceConfigTest, LeavesOutAMissingNetmaskAndGateway)
{
    uci.set(firstSection + ".proto", "static");
    uci.set(firstSection + ".ipaddr", "192.168.1.10");
    expectAppended("<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"192.168.1.10\"/>");
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_INFO, "No netmask defined for vemEth1 interface"},
                                                           {LOG_INFO, "No Gateway defined for vemEth1 interface"}}));
}

TEST_F(InterfaceConfigTest, ReadsNoStaleAddressInDhcpMode)
{
    setStatic(firstSection);
    uci.set(firstSection + ".proto", "dhcp");
    expectAppended("<Interface Name=\"VemkEth1\" Mode=\"Dhcp\"/>");
    EXPECT_EQ(shell.commands().size(), 1U);
}

TEST_F(InterfaceConfigTest, IsDisabledWithoutAProtocol)
{
    setStatic(secondSection);
    uci.set(secondSection + ".proto", "none");
    expectAppended("<Interface Name=\"VemkEth2\" Mode=\"Disabled\"/>", "vemEth2");
}

TEST_F(InterfaceConfigTest, InsertsValuesUnescaped)
{
    uci.set(firstSection + ".proto", "static");
    uci.set(firstSection + ".ipaddr", "a\"<&");
    expectAppended("<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"a\"<&\"/>");
}

TEST_F(InterfaceConfigTest, FailsSilentlyWithoutAStoredProtocol)
{
    expectFailure({});
}

TEST_F(InterfaceConfigTest, FailsForAnUnknownProtocol)
{
    uci.set(firstSection + ".proto", "pppoe");
    expectFailure({{LOG_WARNING, "Unsupported mode: pppoe"}});
}

TEST_F(InterfaceConfigTest, ComparesTheProtocolExactly)
{
    uci.set(firstSection + ".proto", "dhcpx");
    expectFailure({{LOG_WARNING, "Unsupported mode: dhcpx"}});
}

TEST_F(InterfaceConfigTest, FailsWithoutAnAddressInStaticMode)
{
    uci.set(firstSection + ".proto", "static");
    expectFailure({{LOG_WARNING, "Retrieving IP address for static mode failed"}});
}

TEST_F(InterfaceConfigTest, FailsForAnUnknownInterface)
{
    expectFailure({{LOG_WARNING, "Unsupported interface: VemkEth1"}}, "VemkEth1");
    EXPECT_TRUE(shell.commands().empty());
}

TEST_F(IpConfigGetTest, AnswersWithBothInterfacesAndTheNamesExchanged)
{
    const std::string text = "<IpConfiguration From=\"card7\" To=\"mgmt\"><Interface Name=\"VemkEth1\" Mode=\"Dhcp\"/>"
                             "<Interface Name=\"VemkEth2\" Mode=\"Disabled\"/></IpConfiguration>";
    EXPECT_EQ(serve(textRequest(3, ipConfigGetText)), 0);
    EXPECT_EQ(hex(requester.receive()), hex(textMessage(replyTo(ipConfigGet, 1), text)));
    EXPECT_EQ(callsTo("sendto"), (std::vector<std::string>{std::to_string(text.size() + 25) +
                                                           " 255.255.255.255:" + std::to_string(requester.port())}));
    EXPECT_EQ(log.lines().back(), (CapturedLog::Line{LOG_INFO, text}));
}

TEST_F(IpConfigGetTest, CountsTheTerminatingNul)
{
    serve(textRequest(3, ipConfigGetText));
    const Bytes reply = requester.receive();
    const std::size_t length = textOf(reply).size();
    EXPECT_EQ(SampleHeader::from(reply).payloadLength, length + 5);
    EXPECT_EQ(Bytes(reply.begin() + 20, reply.begin() + 24), little32(static_cast<std::uint32_t>(length) + 1));
}

TEST_F(IpConfigGetTest, LogsTheReplyOnTwoLines)
{
    serve(textRequest(3, ipConfigGetText));
    ASSERT_EQ(logged().size(), 3U);
    EXPECT_EQ(logged()[0], start);
    EXPECT_EQ(logged()[1], (CapturedLog::Line{LOG_INFO, "copy to payload:"}));
    EXPECT_TRUE(logged()[2].text.starts_with("<IpConfiguration From=\"card7\" To=\"mgmt\">"));
}

TEST_F(IpConfigGetTest, AcceptsTheOtherRoot)
{
    EXPECT_EQ(serve(textRequest(3, "<RebootCard From=\"mgmt\" To=\"card7\"/>")), 0);
    EXPECT_TRUE(textOf(requester.receive()).starts_with("<IpConfiguration "));
}

TEST_F(IpConfigGetTest, LogsAFailedFirstInterfaceAtTheInformationalLevel)
{
    uci.remove(firstSection + ".proto");
    EXPECT_EQ(serve(textRequest(3, ipConfigGetText)), -1);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{start, {LOG_INFO, "Error VEM Interface 1 Config"}}));
    expectBroadcast(ipConfigGet, 2);
}

TEST_F(IpConfigGetTest, LogsAFailedSecondInterfaceAtTheWarningLevel)
{
    uci.set(secondSection + ".proto", "pppoe");
    EXPECT_EQ(serve(textRequest(3, ipConfigGetText)), -1);
    EXPECT_EQ(logged(),
              (std::vector<CapturedLog::Line>{
                  start, {LOG_WARNING, "Unsupported mode: pppoe"}, {LOG_WARNING, "Error VEM Interface 2 Config"}}));
    expectBroadcast(ipConfigGet, 2);
}

TEST_F(IpConfigGetTest, FailsIfTheReplyCannotBeSent)
{
    failNext("sendto", ENETUNREACH);
    EXPECT_EQ(serve(textRequest(3, ipConfigGetText)), -1);
}

TEST_F(IpConfigGetTest, FailsIfTheReplyDoesNotFitIntoADatagram)
{
    const std::string sender(3990, 'x');
    EXPECT_EQ(serve(textRequest(3, "<RebootCard From=\"" + sender + "\" To=\"card7\"/>")), -1);
    const std::size_t size = log.infos().back().size();
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Reply of " + std::to_string(size) +
                                                        " characters does not fit into a datagram"}));
    expectBroadcast(ipConfigGet, 2);
}

TEST_F(IpConfigGetTest, RefusesA32BitSectionAndDumpsTheHeader)
{
    const SampleHeader other = {.messageFormat = 4, .commandId = 3, .payloadLength = 8};
    EXPECT_EQ(serve(other.bytes() + section(Bytes{1, 2, 3, 4})), -1);
    EXPECT_EQ(logged(), (std::vector<CapturedLog::Line>{
                            {LOG_WARNING, "IPConfigGet message should only contain a 8-bit section!"}}));
    EXPECT_NE(out.find("Message format   ( 8bit): 0x4\n"), std::string::npos);
    expectBroadcast(ipConfigGet, 2);
}
