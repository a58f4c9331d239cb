// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/IpConfiguration.h"

#include "client/model/Failure.h"
#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

const std::string opening = "<IpConfiguration From=\"card1\" To=\"tarvelctl\">";
const std::string closing = "</IpConfiguration>";
const std::string eth1Element =
    "<Interface Name=\"VemkEth1\" Mode=\"Static\" Address=\"10.0.0.11\" Netmask=\"255.0.0.0\"/>";
const std::string eth2Element = "<Interface Name=\"VemkEth2\" Mode=\"Dhcp\"/>";

IpConfiguration configurationOf(const std::string& text)
{
    return parseIpConfiguration(text);
}

bool isRefusedConfiguration(const std::string& text)
{
    return failureOf([&] { (void)configurationOf(text); }).code == ExitCode::protocol;
}

TEST(IpConfigurationTest, GivesBothInterfaces)
{
    const IpConfiguration configuration = configurationOf(opening + eth1Element + eth2Element + closing);
    const InterfaceConfig first = {"VemkEth1", IpMode::fixed, "10.0.0.11", "255.0.0.0", std::nullopt};
    const InterfaceConfig second = {"VemkEth2", IpMode::dhcp, std::nullopt, std::nullopt, std::nullopt};
    EXPECT_EQ(configuration.interfaces, (std::vector<InterfaceConfig>{first, second}));
}

TEST(IpConfigurationTest, TakesAPrefixForANetmask)
{
    const std::string prefixed = "<Interface Name=\"VemkEth2\" Mode=\"Static\" Address=\"10.0.1.11/20\"/>";
    const InterfaceConfig second = {"VemkEth2", IpMode::fixed, "10.0.1.11", "255.255.240.0", std::nullopt};
    EXPECT_EQ(configurationOf(opening + eth1Element + prefixed + closing).interfaces[1], second);
}

TEST(IpConfigurationTest, LeavesAPrefixThatIsNone)
{
    for (const char* address : {"10.0.1.11/33", "10.0.1.11/", "10.0.1.11/2x"}) {
        const std::string odd =
            "<Interface Name=\"VemkEth2\" Mode=\"Static\" Address=\"" + std::string(address) + "\"/>";
        const InterfaceConfig second = {"VemkEth2", IpMode::fixed, address, std::nullopt, std::nullopt};
        EXPECT_EQ(configurationOf(opening + eth1Element + odd + closing).interfaces[1], second);
    }
}

TEST(IpConfigurationTest, ShowsSeveralAddressesAsSeveral)
{
    const std::string several = "<Interface Name=\"VemkEth2\" Mode=\"Static\" Address=\"10.0.1.11/24 10.0.2.11/24\"/>";
    const InterfaceConfig second = configurationOf(opening + eth1Element + several + closing).interfaces[1];
    EXPECT_EQ(second.address, "10.0.1.11/24, 10.0.2.11/24");
    EXPECT_EQ(addressesOf(second), (std::vector<std::string>{"10.0.1.11", "10.0.2.11"}));
}

TEST(IpConfigurationTest, NamesTheCardAndUs)
{
    const IpConfiguration configuration = configurationOf(opening + eth1Element + eth2Element + closing);
    EXPECT_EQ(configuration.from, "card1");
    EXPECT_EQ(configuration.to, "tarvelctl");
}

TEST(IpConfigurationTest, IsReadByItsFormIfItIsNoXml)
{
    const IpConfiguration configuration =
        configurationOf("<IpConfiguration From=\"a<b\" To=\"tarvelctl\">" + eth1Element + eth2Element + closing);
    EXPECT_EQ(configuration.from, "a<b");
    EXPECT_TRUE(configuration.malformed);
}

TEST(IpConfigurationTest, IsFoundByTheInterfacesName)
{
    const IpConfiguration configuration = configurationOf(opening + eth1Element + eth2Element + closing);
    EXPECT_EQ(configuration.find("VemkEth2")->mode, IpMode::dhcp);
    EXPECT_EQ(configuration.find("VemkEth3"), nullptr);
}

TEST(IpConfigurationTest, HasNoOtherForm)
{
    const std::string otherMode = "<Interface Name=\"VemkEth2\" Mode=\"Pppoe\"/>";
    for (const std::string& text :
         {std::string(), opening + closing, opening + eth1Element + closing,
          opening + eth2Element + eth1Element + closing, opening + eth1Element + otherMode + closing,
          opening + eth1Element + eth2Element, opening + eth1Element + eth2Element + eth2Element + closing,
          "<IpConfiguration To=\"tarvelctl\">" + eth1Element + eth2Element + closing}) {
        EXPECT_TRUE(isRefusedConfiguration(text)) << text;
    }
}

TEST(IpConfigurationRequestTest, IsWrittenWithoutWhitespaceBetweenElements)
{
    const InterfaceConfig first = {"VemkEth1", IpMode::fixed, "10.0.0.11", "255.0.0.0", "10.0.0.1"};
    const InterfaceConfig second = {"VemkEth2", IpMode::disabled, std::nullopt, std::nullopt, std::nullopt};
    EXPECT_EQ(ipConfigSetXml("card1", {first, second}),
              "<IpConfiguration From=\"tarvelctl\" To=\"card1\"><Interface Name=\"VemkEth1\" Mode=\"Static\" "
              "Address=\"10.0.0.11\" Netmask=\"255.0.0.0\" Gateway=\"10.0.0.1\"/><Interface Name=\"VemkEth2\" "
              "Mode=\"Disabled\"/></IpConfiguration>");
}

TEST(IpConfigurationRequestTest, EscapesTheCardsName)
{
    EXPECT_EQ(ipConfigGetXml("a\"<&>'\n"),
              "<IpConfiguration From=\"tarvelctl\" To=\"a&quot;&lt;&amp;&gt;&apos;&#10;\"/>");
}

TEST(RebootRequestTest, CarriesTheEnvelopeOnly)
{
    EXPECT_EQ(rebootXml("card7"), "<RebootCard From=\"tarvelctl\" To=\"card7\"/>");
}

} // namespace
