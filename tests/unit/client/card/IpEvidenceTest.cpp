// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpEvidence.h"

#include <gtest/gtest.h>

namespace
{

const InterfaceConfig otherEth1 = {"VemkEth1", IpMode::fixed, "10.0.0.11", "255.255.255.0", std::nullopt};
const InterfaceConfig formerEth2 = {"VemkEth2", IpMode::fixed, "10.0.1.11", "255.255.255.0", std::nullopt};
const InterfaceConfig wantedEth2 = {"VemkEth2", IpMode::fixed, "10.0.1.77", "255.255.255.0", std::nullopt};
const InterfaceConfig leasedEth2 = {"VemkEth2", IpMode::dhcp, std::nullopt, std::nullopt, std::nullopt};
const InterfaceConfig silentEth2 = {"VemkEth2", IpMode::disabled, std::nullopt, std::nullopt, std::nullopt};
const IpBefore audible = {formerEth2, true};
const InterfaceConfig leasedEth1 = {"VemkEth1", IpMode::dhcp, std::nullopt, std::nullopt, std::nullopt};
const IpBefore inaudible = {formerEth2, false};

CardIp answer(const InterfaceConfig& second, const std::string& source)
{
    return {{"card", "tarvelctl", {otherEth1, second}, false}, source, "lan0"};
}

// The first interface has a lease, too.
CardIp leasedAnswer(const InterfaceConfig& second, const std::string& source)
{
    return {{"card", "tarvelctl", {leasedEth1, second}, false}, source, "lan0"};
}

IpBefore heardBefore(const InterfaceConfig& second, const std::vector<std::string>& sources)
{
    IpBefore before = {second, false};
    for (const std::string& source : sources) {
        before.hear(1, leasedAnswer(second, source));
    }
    return before;
}

// The same answer to each of so many questions.
void hearEachTime(IpEvidence& evidence, int questions, const CardIp& said)
{
    for (int question = 1; question <= questions; ++question) {
        evidence.hear(question, said);
    }
}

TEST(IpEvidenceTest, AnAnswerFromTheNewAddressProvesIt)
{
    IpEvidence evidence(wantedEth2, audible);
    evidence.hear(1, answer(wantedEth2, "10.0.1.77"));
    EXPECT_EQ(evidence.proof(), Proof::applied);
    EXPECT_TRUE(evidence.isEnough());
}

TEST(IpEvidenceTest, TheAddressOfTheOtherInterfaceProvesNothing)
{
    const InterfaceConfig sameEth2 = {"VemkEth2", IpMode::fixed, "10.0.0.11", "255.255.255.0", std::nullopt};
    IpEvidence evidence(sameEth2, audible);
    hearEachTime(evidence, 3, answer(sameEth2, "10.0.0.11"));
    EXPECT_EQ(evidence.proof(), Proof::stored);
}

TEST(IpEvidenceTest, TheSettingsAloneProveNothing)
{
    IpEvidence evidence(wantedEth2, audible);
    evidence.hear(1, answer(wantedEth2, "10.0.0.11"));
    EXPECT_EQ(evidence.proof(), Proof::none);
}

TEST(IpEvidenceTest, AnInterfaceThatIsNotHeardHereIsStoredAfterThreeQuestions)
{
    IpEvidence evidence(wantedEth2, inaudible);
    hearEachTime(evidence, 2, answer(wantedEth2, "10.0.0.11"));
    EXPECT_FALSE(evidence.isEnough());
    evidence.hear(3, answer(wantedEth2, "10.0.0.11"));
    EXPECT_EQ(evidence.proof(), Proof::stored);
    EXPECT_TRUE(evidence.isEnough());
}

TEST(IpEvidenceTest, RepeatedAnswersToOneQuestionAreOne)
{
    IpEvidence evidence(wantedEth2, inaudible);
    for (int repetition = 0; repetition < 3; ++repetition) {
        evidence.hear(1, answer(wantedEth2, "10.0.0.11"));
    }
    EXPECT_EQ(evidence.proof(), Proof::none);
}

TEST(IpEvidenceTest, AnInterfaceThatCanBeHeardIsWaitedFor)
{
    IpEvidence evidence(wantedEth2, audible);
    hearEachTime(evidence, 99, answer(wantedEth2, "10.0.0.11"));
    EXPECT_FALSE(evidence.isEnough());
    EXPECT_EQ(evidence.proof(), Proof::stored);
    evidence.hear(50, answer(wantedEth2, "10.0.1.77")); // late is not too late
    EXPECT_EQ(evidence.proof(), Proof::applied);
}

TEST(IpEvidenceTest, AnAnswerFromTheFormerAddressCountsHoweverLateItComes)
{
    IpEvidence evidence(wantedEth2, inaudible);
    for (int question = 1; question < 100; ++question) {
        evidence.hear(question, answer(wantedEth2, "10.0.0.11"));
        evidence.hear(std::max(question - 2, 1), answer(wantedEth2, "10.0.1.11"));
        EXPECT_EQ(evidence.proof(), Proof::none);
    }
}

TEST(IpEvidenceTest, OtherSettingsAndRefusalsCountAgainstIt)
{
    IpEvidence evidence(wantedEth2, inaudible);
    evidence.hear(1, answer(wantedEth2, "10.0.0.11"));
    evidence.hear(2, answer(formerEth2, "10.0.0.11"));
    evidence.hear(3, answer(wantedEth2, "10.0.0.11"));
    evidence.hearRefusal();
    evidence.hear(4, answer(wantedEth2, "10.0.0.11"));
    EXPECT_EQ(evidence.proof(), Proof::none);
    EXPECT_EQ(evidence.lastSeen(), wantedEth2);
}

TEST(IpEvidenceTest, AnAddressThatTheCardDoesNotStateIsALease)
{
    IpEvidence evidence(leasedEth2, audible);
    evidence.hear(1, answer(leasedEth2, "10.0.1.101"));
    EXPECT_EQ(evidence.proof(), Proof::applied);
}

TEST(IpEvidenceTest, TheFormerAddressIsNoProofOfALease)
{
    IpEvidence evidence(leasedEth2, audible);
    hearEachTime(evidence, 3, answer(leasedEth2, "10.0.1.11"));
    EXPECT_EQ(evidence.proof(), Proof::stored);
    EXPECT_FALSE(evidence.isEnough());
}

TEST(IpEvidenceTest, ADisabledInterfaceIsProvedByItsSilence)
{
    IpEvidence evidence(silentEth2, audible);
    evidence.hear(1, answer(silentEth2, "10.0.0.11"));
    evidence.hear(1, answer(silentEth2, "10.0.1.11"));
    evidence.hear(2, answer(silentEth2, "10.0.0.11"));
    evidence.hear(3, answer(silentEth2, "10.0.0.11"));
    EXPECT_EQ(evidence.proof(), Proof::none);
    evidence.hear(4, answer(silentEth2, "10.0.0.11"));
    EXPECT_EQ(evidence.proof(), Proof::applied);
}

TEST(IpEvidenceTest, TheSilenceOfADisabledInterfaceThatWasNeverHeardProvesNothing)
{
    IpEvidence evidence(silentEth2, inaudible);
    hearEachTime(evidence, 3, answer(silentEth2, "10.0.0.11"));
    EXPECT_EQ(evidence.proof(), Proof::stored);
}

TEST(IpEvidenceTest, TheFormerAddressCountsAlsoBesideAnotherLease)
{
    IpEvidence evidence(silentEth2, audible);
    CardIp late = answer(silentEth2, "10.0.1.11");
    late.configuration.interfaces[0] = {"VemkEth1", IpMode::dhcp, std::nullopt, std::nullopt, std::nullopt};
    hearEachTime(evidence, 9, late);
    EXPECT_EQ(evidence.proof(), Proof::none);
}

// As a card says that was told to have two leases, and whose network did not follow.
TEST(IpEvidenceTest, TheOtherLeaseIsNoProofOfThis)
{
    IpEvidence evidence(leasedEth2, heardBefore(formerEth2, {"10.0.0.101", "10.0.1.11"}));
    for (int question = 1; question <= 9; ++question) {
        evidence.hear(question, leasedAnswer(leasedEth2, "10.0.0.101"));
        evidence.hear(question, leasedAnswer(leasedEth2, "10.0.1.11"));
        EXPECT_NE(evidence.proof(), Proof::applied);
    }
}

TEST(IpEvidenceTest, ALeaseThatWasNotHeardBeforeIsProofBesideAnother)
{
    IpEvidence evidence(leasedEth2, heardBefore(formerEth2, {"10.0.0.101", "10.0.1.11"}));
    evidence.hear(1, leasedAnswer(leasedEth2, "10.0.1.102"));
    EXPECT_EQ(evidence.proof(), Proof::applied);
}

TEST(IpEvidenceTest, WhereNobodyListenedBeforeEachLeaseMustBeHeard)
{
    IpEvidence evidence(leasedEth2, {});
    evidence.hear(1, leasedAnswer(leasedEth2, "10.0.0.101"));
    EXPECT_EQ(evidence.proof(), Proof::none);
    evidence.hear(1, leasedAnswer(leasedEth2, "10.0.1.102"));
    EXPECT_EQ(evidence.proof(), Proof::applied);
}

TEST(IpEvidenceTest, MoreLeasesThanTheSettingsHaveAreContrary)
{
    for (const InterfaceConfig& wanted : {silentEth2, wantedEth2}) {
        IpEvidence evidence(wanted, heardBefore(leasedEth2, {"10.0.0.101", "10.0.1.102"}));
        for (int question = 1; question <= 9; ++question) {
            evidence.hear(question, leasedAnswer(wanted, "10.0.0.101"));
            evidence.hear(question, leasedAnswer(wanted, "10.0.1.102"));
            EXPECT_EQ(evidence.proof(), Proof::none);
        }
    }
}

TEST(IpEvidenceTest, ALeaseThatMovesIsNotTooMany)
{
    IpEvidence evidence(silentEth2, heardBefore(leasedEth2, {"10.0.0.101", "10.0.1.102"}));
    evidence.hear(1, leasedAnswer(silentEth2, "10.0.0.101"));
    evidence.hear(2, leasedAnswer(silentEth2, "10.0.0.109"));
    evidence.hear(3, leasedAnswer(silentEth2, "10.0.0.109"));
    EXPECT_EQ(evidence.proof(), Proof::applied);
}

TEST(IpEvidenceTest, OneLeaseOfTwoIsNotKnownToBeThisInterfaces)
{
    EXPECT_FALSE(heardBefore(leasedEth2, {"10.0.0.101"}).audible);
    EXPECT_TRUE(heardBefore(leasedEth2, {"10.0.0.101", "10.0.1.102"}).audible);
    EXPECT_TRUE(heardBefore(formerEth2, {"10.0.1.11"}).audible);
}

} // namespace
