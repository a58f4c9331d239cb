// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpMemory.h"

#include "client/card/StateFolder.h"
#include "unit/client/card/OwnStateFolder.h"

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <thread>

namespace
{

class IpMemoryTest : public OwnStateFolder
{
protected:
    static InterfaceConfig having(const std::string& interface, int number)
    {
        return {interface, IpMode::fixed, fmt::format("10.0.0.{}", number), "255.255.255.0", std::nullopt};
    }
};

TEST_F(IpMemoryTest, KeepsWhatTwoRunsRememberAtOnce)
{
    const auto rememberSome = [](const std::string& interface) {
        for (int number = 1; number <= 8; ++number) {
            EXPECT_TRUE(rememberIp("card1", having(interface, number), number));
        }
    };
    std::thread other(rememberSome, "VemkEth2");
    rememberSome("VemkEth1");
    other.join();
    EXPECT_EQ(rememberedIps("card1").size(), 16U);
}

TEST_F(IpMemoryTest, KnowsNothingOfACardThatWasNotChanged)
{
    EXPECT_TRUE(rememberedIps("card1").empty());
}

TEST_F(IpMemoryTest, TellsTheNewestFirst)
{
    ASSERT_TRUE(rememberIp("card1", having("VemkEth1", 1), 100));
    ASSERT_TRUE(rememberIp("card1", having("VemkEth2", 2), 200));
    const std::vector<RememberedIp> wanted = {{having("VemkEth2", 2), 200}, {having("VemkEth1", 1), 100}};
    EXPECT_EQ(rememberedIps("card1"), wanted);
    EXPECT_TRUE(rememberedIps("card2").empty());
}

TEST_F(IpMemoryTest, KeepsTheLastEightOfEachInterface)
{
    ASSERT_TRUE(rememberIp("card1", having("VemkEth2", 200), 1));
    for (int number = 1; number <= 10; ++number) {
        ASSERT_TRUE(rememberIp("card1", having("VemkEth1", number), number));
    }
    const std::vector<RememberedIp> known = rememberedIps("card1");
    ASSERT_EQ(known.size(), mostRemembered + 1);
    EXPECT_EQ(known.front().settings, having("VemkEth1", 10));
    EXPECT_EQ(known[mostRemembered - 1].settings, having("VemkEth1", 3));
    EXPECT_EQ(known.back().settings, having("VemkEth2", 200));
}

TEST_F(IpMemoryTest, ReadsALineOfOldAsTheNewestWithoutATime)
{
    ASSERT_TRUE(replaceStateFile("ip-card1", "VemkEth1 Static =10.0.0.1 =255.255.255.0 -\n"));
    const std::vector<RememberedIp> wanted = {{having("VemkEth1", 1), std::nullopt}};
    EXPECT_EQ(rememberedIps("card1"), wanted);
    ASSERT_TRUE(rememberIp("card1", having("VemkEth1", 2), 100));
    EXPECT_EQ(rememberedIps("card1").back(), wanted.front());
}

TEST_F(IpMemoryTest, PassesOverWhatIsNoEntry)
{
    ASSERT_TRUE(replaceStateFile("ip-card1", "nonsense\nVemkEth1 Sometimes - - -\nVemkEth2 Dhcp - - - 7\n"));
    const InterfaceConfig dhcp{"VemkEth2", IpMode::dhcp, std::nullopt, std::nullopt, std::nullopt};
    const std::vector<RememberedIp> wanted = {{dhcp, 7}};
    EXPECT_EQ(rememberedIps("card1"), wanted);
}

} // namespace
