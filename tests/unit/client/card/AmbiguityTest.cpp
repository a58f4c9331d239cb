// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Ambiguity.h"

#include <gtest/gtest.h>

namespace
{

std::string stating(const std::string& eth1, const std::string& eth2)
{
    const std::string mask = R"(" Netmask="255.255.255.0"/>)";
    return R"(<IpConfiguration From="card1" To="tarvelctl"><Interface Name="VemkEth1" Mode="Static" Address=")" + eth1 +
           mask + R"(<Interface Name="VemkEth2" Mode="Static" Address=")" + eth2 + mask + "</IpConfiguration>";
}

const std::string twoPorts = stating("10.0.0.11", "10.0.1.11");

CardReply answer(const std::string& address, const std::string& interface, std::uint32_t sequence = 1,
                 const std::string& said = twoPorts)
{
    CardReply reply{{}, address, interface};
    reply.reply.header.status = static_cast<std::uint8_t>(Status::success);
    reply.reply.header.messageFormat = section8Bit;
    reply.reply.header.sequenceId = sequence;
    reply.reply.payload = textSection(said);
    return reply;
}

TEST(AmbiguityTest, IsNoneInOneAnswer)
{
    EXPECT_EQ(ambiguityOf({answer("10.0.0.11", "lan0")}), std::nullopt);
}

TEST(AmbiguityTest, IsNoneIfEachInterfaceHeardTheSameOnce)
{
    EXPECT_EQ(ambiguityOf({answer("10.0.0.11", "lan0"), answer("10.0.1.11", "lan1")}), std::nullopt);
}

TEST(AmbiguityTest, IsNoneInTheAnswersToTwoRequests)
{
    EXPECT_EQ(ambiguityOf({answer("10.0.0.11", "lan0", 1), answer("10.0.0.11", "lan0", 2)}), std::nullopt);
}

TEST(AmbiguityTest, IsInTwoAnswersOfOneSenderToOneRequest)
{
    const std::optional<std::string> why = ambiguityOf({answer("10.0.0.11", "lan0"), answer("10.0.0.11", "lan0")});
    ASSERT_TRUE(why);
    EXPECT_NE(why->find("10.0.0.11 on lan0 and 10.0.0.11 on lan0"), std::string::npos) << *why;
}

TEST(AmbiguityTest, IsInDifferentTexts)
{
    const std::string other = stating("10.0.0.12", "10.0.1.12");
    const std::optional<std::string> why =
        ambiguityOf({answer("10.0.0.11", "lan0"), answer("10.0.1.12", "lan1", 1, other)});
    ASSERT_TRUE(why);
    EXPECT_NE(why->find("10.0.0.11 on lan0 and 10.0.1.12 on lan1"), std::string::npos) << *why;
}

TEST(AmbiguityTest, IsInARefusalBesideAText)
{
    CardReply refusal = answer("10.0.1.11", "lan1");
    refusal.reply.header.status = static_cast<std::uint8_t>(Status::failure);
    refusal.reply.payload.clear();
    EXPECT_TRUE(ambiguityOf({answer("10.0.0.11", "lan0"), refusal}));
}

TEST(AmbiguityTest, IsNoneIfACardStatesBothOfItsPortsInOneNetwork)
{
    const std::string both = stating("10.0.0.11", "10.0.0.12");
    EXPECT_EQ(ambiguityOf({answer("10.0.0.11", "lan0", 1, both), answer("10.0.0.12", "lan0", 1, both)}), std::nullopt);
}

TEST(AmbiguityTest, IsInASenderThatTheTextDoesNotState)
{
    const std::optional<std::string> why = ambiguityOf({answer("10.0.0.11", "lan0"), answer("10.0.0.99", "lan0")});
    ASSERT_TRUE(why);
    EXPECT_NE(why->find("both ports in one network"), std::string::npos) << *why;
}

TEST(AmbiguityTest, IsInStrangersThatAnswerOneRequestEach)
{
    EXPECT_TRUE(ambiguityOf({answer("10.0.0.11", "lan0", 1), answer("10.0.0.99", "lan0", 2)}));
}

TEST(AmbiguityTest, IsInAThirdAnswerOfAStatedSender)
{
    const std::string both = stating("10.0.0.11", "10.0.0.12");
    EXPECT_TRUE(ambiguityOf({answer("10.0.0.11", "lan0", 1, both), answer("10.0.0.12", "lan0", 1, both),
                             answer("10.0.0.12", "lan0", 1, both)}));
}

TEST(AmbiguityTest, StatesNoAddressesInWhatMakesNoSense)
{
    EXPECT_TRUE(statedAddresses(answer("10.0.0.11", "lan0", 1, "nonsense")).empty());
    EXPECT_EQ(statedAddresses(answer("10.0.0.11", "lan0")), (std::vector<std::string>{"10.0.0.11", "10.0.1.11"}));
}

} // namespace
