// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/FuzzedCard.h"
#include "support/CapturedOutput.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using Feed = std::string (FuzzedCard::*)(std::span<const std::uint8_t>);

Bytes contentOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string fed(FuzzedCard& card, Feed feed, std::span<const std::uint8_t> bytes)
{
    CapturedOutput output;
    return (card.*feed)(bytes);
}

// Every file, and every beginning of it.
void replay(const std::string& folder, Feed feed)
{
    FuzzedCard card;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CORPUS_DIRECTORY "/" + folder)) {
        const Bytes content = contentOf(entry.path());
        EXPECT_EQ(fed(card, feed, content), "") << entry.path();
        for (std::size_t length = 0; length < content.size(); length += 7) {
            EXPECT_EQ(fed(card, feed, std::span(content).first(length)), "") << entry.path() << ", cut at " << length;
        }
        ++files;
    }
    EXPECT_GT(files, 0U);
}

} // namespace

TEST(ReplayTest, EveryDatagramOfTheCorpusIsSurvived)
{
    replay("datagram", &FuzzedCard::feedDatagram);
}

TEST(ReplayTest, EveryDocumentOfTheCorpusIsSurvived)
{
    replay("document", &FuzzedCard::feedDocument);
}

TEST(ReplayTest, ARequestReachesItsCommand)
{
    FuzzedCard card;
    const std::string text = "<RebootCard From=\"a\" To=\"card7\"/>";
    EXPECT_EQ(fed(card, &FuzzedCard::feedDatagram, textRequest(9, text)), "");
    EXPECT_EQ(FakeSystem::commands(), (std::vector<std::string>{"reboot -d 2 &"}));
}
