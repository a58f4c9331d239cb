// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/IpConfigParser.h"
#include "services/XmlReader.h"
#include "support/SystemTest.h"

#include <syslog.h>

namespace
{

class IpConfigParserTest : public SystemTest
{
protected:
    // The result for the first node of a document.
    int configure(const std::string& document)
    {
        XmlReader reader(document);
        reader.read();
        CapturedOutput output;
        const int result = configureInterface(reader);
        err = output.err();
        return result;
    }

    void expectStaged(const std::string& element, const std::vector<std::string>& commands)
    {
        EXPECT_EQ(configure(element), 1);
        EXPECT_EQ(shell.commands(), commands);
        EXPECT_TRUE(log.lines().empty());
    }

    void expectRefused(const std::string& element, const std::string& warning)
    {
        EXPECT_EQ(configure(element), -1);
        EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, warning}}));
    }

    void expectInvalidAddress(const std::string& attributes, const std::vector<std::string>& commands)
    {
        EXPECT_EQ(configure("<Interface Name=\"VemkEth1\" Mode=\"Static\" " + attributes + "/>"), -1);
        EXPECT_EQ(shell.commands(), commands);
        EXPECT_EQ(err, "nonsense is not a valid IP address\n");
        EXPECT_TRUE(log.lines().empty());
    }

    std::string err;
};

const std::string setProto = "uci -q set network.lanvemt2eth1.proto=static";
const std::string setAddress = "uci -q set network.lanvemt2eth1.ipaddr=192.168.1.10";
const std::string setNetmask = "uci -q set network.lanvemt2eth1.netmask=255.255.255.0";
const std::string setGateway = "uci -q set network.lanvemt2eth1.gateway=192.168.1.1";
const std::string deleteGateway = "uci -q delete network.lanvemt2eth1.gateway";

const std::string withoutGateway =
    "<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"192.168.1.10\" Netmask=\"255.255.255.0\"/>";
const std::string withGateway = "<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"192.168.1.10\" "
                                "Netmask=\"255.255.255.0\" Gateway=\"192.168.1.1\"/>";

std::vector<std::string> withoutAddress(const std::string& section, const std::string& proto)
{
    return {"uci -q set " + section + ".proto=" + proto, "uci -q delete " + section + ".ipaddr",
            "uci -q delete " + section + ".netmask", "uci -q delete " + section + ".gateway"};
}

} // namespace

TEST_F(IpConfigParserTest, StagesAStaticInterfaceWithAGateway)
{
    expectStaged(withGateway, {setProto, setAddress, setNetmask, setGateway});
}

TEST_F(IpConfigParserTest, DeletesTheGatewayOfAStaticInterfaceWithoutOne)
{
    expectStaged(withoutGateway, {setProto, setAddress, setNetmask, deleteGateway});
}

TEST_F(IpConfigParserTest, StagesADhcpInterface)
{
    expectStaged("<Interface Name=\"VemkEth2\" Mode=\"Dhcp\"/>", withoutAddress("network.lanvemt2eth2", "dhcp"));
}

TEST_F(IpConfigParserTest, StagesADisabledInterface)
{
    expectStaged("<Interface Name=\"VemkEth1\" Mode=\"Disabled\"/>", withoutAddress("network.lanvemt2eth1", "none"));
}

TEST_F(IpConfigParserTest, IgnoresAddressesInDhcpMode)
{
    expectStaged("<Interface Name=\"VemkEth1\" Mode=\"Dhcp\" Address=\"nonsense\"/>",
                 withoutAddress("network.lanvemt2eth1", "dhcp"));
}

TEST_F(IpConfigParserTest, IgnoresFailingDeletes)
{
    for (const char* option : {"ipaddr", "netmask", "gateway"}) {
        shell.answer(std::string("uci -q delete network.lanvemt2eth1.") + option, exitStatus(1));
    }
    EXPECT_EQ(configure("<Interface Name=\"VemkEth1\" Mode=\"Dhcp\"/>"), 1);
}

TEST_F(IpConfigParserTest, IgnoresAFailingDeleteOfTheGateway)
{
    shell.answer(deleteGateway, exitStatus(1));
    EXPECT_EQ(configure(withoutGateway), 1);
}

TEST_F(IpConfigParserTest, TakesALongerInterfaceNameForTheOneItBeginsWith)
{
    expectStaged("<Interface Name=\"VemkEth10\" Mode=\"Dhcp\"/>", withoutAddress("network.lanvemt2eth1", "dhcp"));
}

TEST_F(IpConfigParserTest, TakesALongerModeForTheOneItBeginsWith)
{
    expectStaged("<Interface Name=\"VemkEth1\" Mode=\"Dhcpx\"/>", withoutAddress("network.lanvemt2eth1", "dhcp"));
}

TEST_F(IpConfigParserTest, TakesALongerElementNameForAnInterface)
{
    expectStaged("<Interfaces Name=\"VemkEth1\" Mode=\"Dhcp\"/>", withoutAddress("network.lanvemt2eth1", "dhcp"));
}

TEST_F(IpConfigParserTest, AcceptsAShortFormOfAnAddress)
{
    EXPECT_EQ(configure("<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"10.1\" Netmask=\"255.0.0.0\"/>"), 1);
    EXPECT_EQ(shell.commands().at(1), "uci -q set network.lanvemt2eth1.ipaddr=10.1");
}

TEST_F(IpConfigParserTest, LetsNoShellTextPassAsAnAddress)
{
    EXPECT_EQ(configure("<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"1.2.3.4 ;reboot\"/>"), -1);
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{setProto}));
}

TEST_F(IpConfigParserTest, RefusesAnInvalidAddress)
{
    expectInvalidAddress("Address=\"nonsense\" Netmask=\"255.255.255.0\"", {setProto});
}

TEST_F(IpConfigParserTest, RefusesAnInvalidNetmask)
{
    expectInvalidAddress("Address=\"192.168.1.10\" Netmask=\"nonsense\"", {setProto, setAddress});
}

TEST_F(IpConfigParserTest, RefusesAnInvalidGateway)
{
    expectInvalidAddress("Address=\"192.168.1.10\" Netmask=\"255.255.255.0\" Gateway=\"nonsense\"",
                         {setProto, setAddress, setNetmask});
}

TEST_F(IpConfigParserTest, RefusesAMissingAddress)
{
    expectRefused("<Interface Name=\"VemkEth1\" Mode=\"Static\" Netmask=\"255.0.0.0\"/>",
                  "Interface address is missing");
    EXPECT_EQ(shell.commands(), (std::vector<std::string>{setProto}));
}

TEST_F(IpConfigParserTest, RefusesAMissingNetmask)
{
    expectRefused("<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"10.0.0.1\"/>",
                  "Interface netmask is missing");
}

TEST_F(IpConfigParserTest, FailsAtEachSetThatFails)
{
    for (const std::string& failing : {setProto, setAddress, setNetmask, setGateway}) {
        shell.answer(failing, exitStatus(1));
        forgetCalls();
        EXPECT_EQ(configure(withGateway), -1);
        EXPECT_EQ(shell.commands().back(), failing);
        shell.answer(failing, 0);
    }
}

TEST_F(IpConfigParserTest, FailsIfTheProtocolOfADisabledInterfaceCannotBeSet)
{
    shell.answer("uci -q set network.lanvemt2eth1.proto=none", exitStatus(1));
    EXPECT_EQ(configure("<Interface Name=\"VemkEth1\" Mode=\"Disabled\"/>"), -1);
    EXPECT_EQ(shell.commands().size(), 1U);
}

TEST_F(IpConfigParserTest, RefusesAnUnknownInterface)
{
    expectRefused("<Interface Name=\"VemkEth3\" Mode=\"Dhcp\"/>", "Unknown interface: VemkEth3");
}

TEST_F(IpConfigParserTest, RefusesAnUnknownMode)
{
    expectRefused("<Interface Name=\"VemkEth1\" Mode=\"static\"/>", "Unsupported interface mode: static");
}

TEST_F(IpConfigParserTest, RefusesAMissingName)
{
    expectRefused("<Interface Mode=\"Dhcp\"/>", "Getting attribute \"Name\" failed");
}

TEST_F(IpConfigParserTest, RefusesAMissingMode)
{
    expectRefused("<Interface Name=\"VemkEth1\"/>", "Getting attribute \"Mode\" FAILED");
}

TEST_F(IpConfigParserTest, RefusesAnInterfaceWithoutAttributes)
{
    expectRefused("<Interface/>", "No attributes in node: Interface");
}

TEST_F(IpConfigParserTest, SkipsAnotherElement)
{
    EXPECT_EQ(configure("<Other/>"), 0);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Wrong node name: Other"}}));
}

TEST_F(IpConfigParserTest, SkipsAnEndTagOfAnInterface)
{
    XmlReader reader("<Interface Name=\"VemkEth1\" Mode=\"Dhcp\"></Interface>");
    reader.read();
    reader.read();
    EXPECT_EQ(configureInterface(reader), 0);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Wrong node type: 15"}}));
}

TEST_F(IpConfigParserTest, FailsWhereANodeHasNoName)
{
    const XmlReader reader("<a/>"); // before its first node
    EXPECT_EQ(configureInterface(reader), -1);
    EXPECT_EQ(isConfigurationStart(reader), -1);
    EXPECT_EQ(isConfigurationEnd(reader), -1);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>(3, "Missing node name")));
}

TEST_F(IpConfigParserTest, TellsTheStartOfAConfigurationFromItsEnd)
{
    XmlReader reader("<IpConfigurationX> </IpConfigurationX>");
    reader.read();
    EXPECT_EQ(isConfigurationStart(reader), 1);
    EXPECT_EQ(isConfigurationEnd(reader), 0);
    reader.read();
    reader.read();
    EXPECT_EQ(isConfigurationStart(reader), 0);
    EXPECT_EQ(isConfigurationEnd(reader), 1);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Wrong node type: 1", "Wrong node type: 15"}));
}
