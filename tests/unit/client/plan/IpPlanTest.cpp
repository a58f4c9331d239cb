// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/IpPlan.h"

#include "client/model/Failure.h"
#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

const InterfaceConfig dhcpEth2 = {"VemkEth2", IpMode::dhcp, std::nullopt, std::nullopt, std::nullopt};
const InterfaceConfig disabledEth1 = {"VemkEth1", IpMode::disabled, std::nullopt, std::nullopt, std::nullopt};
const InterfaceConfig disabledEth2 = {"VemkEth2", IpMode::disabled, std::nullopt, std::nullopt, std::nullopt};
const InterfaceConfig fixedEth1 = {"VemkEth1", IpMode::fixed, "10.0.0.11", "255.255.255.0", "10.0.0.1"};

IpConfiguration cardWith(const InterfaceConfig& eth1, const InterfaceConfig& eth2)
{
    return {"card1", "tarvelctl", {eth1, eth2}, false};
}

bool mentions(const std::vector<std::string>& effects, const std::string& text)
{
    for (const std::string& effect : effects) {
        if (effect.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

std::string refusalOf(const std::string& text)
{
    const Failure failure = failureOf([&] { (void)parseStatic("VemkEth1", text); });
    EXPECT_EQ(failure.code, ExitCode::usage);
    return failure.hint;
}

TEST(ParseStaticTest, TakesAPrefixLength)
{
    const InterfaceConfig expected = {"VemkEth1", IpMode::fixed, "10.0.0.11", "255.255.255.0", std::nullopt};
    EXPECT_EQ(parseStatic("VemkEth1", "10.0.0.11/24"), expected);
}

TEST(ParseStaticTest, TakesADottedNetmask)
{
    EXPECT_EQ(parseStatic("VemkEth1", "10.0.0.11/255.255.0.0").netmask, "255.255.0.0");
}

TEST(ParseStaticTest, TakesAGateway)
{
    EXPECT_EQ(parseStatic("VemkEth1", "10.0.0.11/24,10.0.0.1"), fixedEth1);
}

TEST(ParseStaticTest, RefusesAnAddressWithoutNetmask)
{
    EXPECT_NE(refusalOf("10.0.0.11").find("netmask"), std::string::npos);
}

TEST(ParseStaticTest, RefusesWhatIsNoAddress)
{
    for (const char* text : {"10.0.0/24", "10.0.0.256/24", "0.0.0.11/24", "127.0.0.1/8", "224.0.0.1/24", "/24", ""}) {
        EXPECT_FALSE(refusalOf(text).empty()) << text;
    }
}

TEST(ParseStaticTest, RefusesWhatIsNoNetmask)
{
    for (const char* mask : {"0", "31", "32", "33", "-1", "255.0.255.0", "x", ""}) {
        EXPECT_FALSE(refusalOf(std::string("10.0.0.11/") + mask).empty()) << mask;
    }
}

TEST(ParseStaticTest, RefusesTheNetworksOwnAddresses)
{
    EXPECT_NE(refusalOf("10.0.0.0/24").find("network"), std::string::npos);
    EXPECT_NE(refusalOf("10.0.0.255/24").find("broadcast"), std::string::npos);
}

TEST(ParseStaticTest, RefusesAGatewayOutsideTheNet)
{
    EXPECT_NE(refusalOf("10.0.0.11/24,10.0.1.1").find("outside"), std::string::npos);
}

TEST(ParseStaticTest, RefusesTheCardAsItsOwnGateway)
{
    EXPECT_FALSE(refusalOf("10.0.0.11/24,10.0.0.11").empty());
}

TEST(InterfaceNameTest, IsOneOfTwo)
{
    EXPECT_NO_THROW(requireInterfaceName("VemkEth2"));
    EXPECT_THROW(requireInterfaceName("eth0"), Failure);
    EXPECT_THROW(requireInterfaceName("VemkEth10"), Failure);
}

TEST(IpPlanTest, HasNothingToDoForTheSameConfiguration)
{
    const IpPlan plan = planIp(cardWith(fixedEth1, dhcpEth2), fixedEth1);
    EXPECT_TRUE(plan.nothingToDo());
    EXPECT_TRUE(plan.effects.empty());
}

TEST(IpPlanTest, TellsThatAGatewayWillBeDeleted)
{
    InterfaceConfig wanted = fixedEth1;
    wanted.gateway.reset();
    EXPECT_TRUE(mentions(planIp(cardWith(fixedEth1, dhcpEth2), wanted).effects, "gateway 10.0.0.1"));
}

TEST(IpPlanTest, TellsThatStagedSettingsAreCommittedAlong)
{
    EXPECT_TRUE(mentions(planIp(cardWith(fixedEth1, dhcpEth2), disabledEth1).effects, "NTP server"));
}

TEST(IpPlanTest, TellsWhenBothInterfacesShareANetwork)
{
    const InterfaceConfig wanted = {"VemkEth2", IpMode::fixed, "10.0.0.12", "255.255.255.0", std::nullopt};
    EXPECT_TRUE(mentions(planIp(cardWith(fixedEth1, dhcpEth2), wanted).effects, "same network"));
}

TEST(IpPlanTest, TellsWhichOfSeveralAddressesIsInTheSameNetwork)
{
    const InterfaceConfig wanted = {"VemkEth2", IpMode::fixed, "10.0.0.12", "255.255.255.0", std::nullopt};
    const InterfaceConfig several = {"VemkEth1", IpMode::fixed, "10.0.9.11/24, 10.0.0.11/24", std::nullopt,
                                     std::nullopt};
    const std::vector<std::string> effects = planIp(cardWith(several, dhcpEth2), wanted).effects;
    EXPECT_TRUE(mentions(effects, "VemkEth1 (10.0.0.11) will be in the same network"));
    EXPECT_FALSE(mentions(effects, "10.0.9.11"));
}

TEST(IpPlanTest, RefusesToDisableBothInterfaces)
{
    EXPECT_THROW((void)planIp(cardWith(fixedEth1, disabledEth2), disabledEth1), Failure);
}

TEST(IpPlanTest, GoesBackToWhatTheCardHas)
{
    EXPECT_EQ(planIp(cardWith(fixedEth1, dhcpEth2), disabledEth1).rollback, fixedEth1);
}

TEST(IpPlanTest, HasNoWayBackIfTheCardRefusedToTell)
{
    const IpPlan plan = planIp(std::nullopt, disabledEth1);
    EXPECT_FALSE(plan.rollback);
    EXPECT_NE(plan.noRollback.find("refused"), std::string::npos);
}

TEST(IpPlanTest, HasNoWayBackToAStaticInterfaceWithoutNetmask)
{
    InterfaceConfig now = fixedEth1;
    now.netmask.reset();
    const IpPlan plan = planIp(cardWith(now, dhcpEth2), disabledEth1);
    EXPECT_FALSE(plan.rollback);
    EXPECT_NE(plan.noRollback.find("netmask"), std::string::npos);
}

TEST(IpPlanTest, HasNoWayBackToAddressesTheCardWouldRefuse)
{
    InterfaceConfig now = fixedEth1;
    now.address = "10.0.0.11/24";
    EXPECT_FALSE(planIp(cardWith(now, dhcpEth2), disabledEth1).rollback);
}

TEST(IpPlanTest, DescribesAnInterfaceInOneLine)
{
    EXPECT_EQ(describe(fixedEth1), "Static 10.0.0.11/255.255.255.0 gateway 10.0.0.1");
    EXPECT_EQ(describe(dhcpEth2), "Dhcp");
}

TEST(PlanIpTest, TellsThatSeveralAddressesGo)
{
    const InterfaceConfig several = {"VemkEth1", IpMode::fixed, "10.0.0.11/24, 10.0.2.11/24", std::nullopt,
                                     std::nullopt};
    const IpPlan plan = planIp(cardWith(several, dhcpEth2), fixedEth1);
    EXPECT_TRUE(mentions(plan.effects, "all 2 addresses of VemkEth1 (10.0.0.11, 10.0.2.11) will be deleted"));
    EXPECT_NE(plan.noRollback.find("several addresses"), std::string::npos);
    EXPECT_FALSE(plan.rollback);
}

} // namespace
