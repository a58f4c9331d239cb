// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/Replay.h"

#include "fuzz/FuzzedCard.h"
#include "fuzz/FuzzedConnection.h"
#include "support/CapturedOutput.h"
#include "util/Hardened.h"

#include <algorithm>

namespace
{

template<typename Card>
using Feed = std::string (Card::*)(std::span<const std::uint8_t>);

// What the production code prints meanwhile is of no interest.
template<typename Card>
std::string fed(Card& card, Feed<Card> feed, std::span<const std::uint8_t> bytes)
{
    CapturedOutput output;
    return (card.*feed)(bytes);
}

template<typename Card>
void replayQuietly(const std::string& folder, Feed<Card> feed, std::size_t cuts = 16)
{
    const auto feedQuietly = [feed](Card& card, auto bytes) { return fed(card, feed, bytes); };
    replay<Card>(folder, feedQuietly, cuts);
}

} // namespace

TEST(ReplayTest, EveryDatagramOfTheCorpusIsSurvived)
{
    replayQuietly<FuzzedCard>("datagram", &FuzzedCard::feedDatagram, 1000);
}

TEST(ReplayTest, EveryDocumentOfTheCorpusIsSurvived)
{
    replayQuietly<FuzzedCard>("document", &FuzzedCard::feedDocument, 1000);
}

TEST(ReplayTest, EverySessionOfTheCorpusIsSurvived)
{
    replayQuietly<FuzzedCard>("session", &FuzzedCard::feedSession);
}

TEST(ReplayTest, EveryStreamOfTheCorpusIsSurvived)
{
    replayQuietly<FuzzedConnection>("stream", &FuzzedConnection::feedStream);
}

TEST(ReplayTest, AllSourcesOfTheCorpusAreSurvived)
{
    replayQuietly<FuzzedConnection>("sources", &FuzzedConnection::feedSources);
}

TEST(ReplayTest, ARequestReachesItsCommand)
{
    FuzzedCard card;
    const std::string text = "<RebootCard From=\"a\" To=\"card7\"/>";
    EXPECT_EQ(fed(card, &FuzzedCard::feedDatagram, textRequest(9, text)), "");
    EXPECT_EQ(FakeSystem::commands(), (std::vector<std::string>{"reboot -d 2 &"}));
}

TEST(ReplayTest, EachMessageOfAStreamReachesItsCommand)
{
    FuzzedConnection card;
    const Bytes upload = textRequest(8, "archive");
    EXPECT_EQ(fed(card, &FuzzedConnection::feedStream, upload + upload), "");
    const std::vector<std::string> commands = FakeSystem::commands();
    EXPECT_EQ(std::ranges::count(commands, "tar -xzvf firmware.tar.gz -C /tmp/upgrade"),
              hardened ? 0 : 2); // nor listed
}
