// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/IpConfiguration.h"
#include "client/messages/TimeReference.h"
#include "client/messages/Versions.h"
#include "client/model/Failure.h"
#include "client/wire/Frame.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace
{

const std::string versionsText =
    "<Versions>\n\t<Component Id=\"a\" Version=\"1\"/>\n\t<Component Id=\"b\" Version=\"2\"/>\n"
    "</Versions>";
const std::string ipText = "<IpConfiguration From=\"a\" To=\"b\"><Interface Name=\"VemkEth1\" Mode=\"Static\" "
                           "Address=\"10.0.0.1\" Netmask=\"255.0.0.0\"/><Interface Name=\"VemkEth2\" Mode=\"Dhcp\"/>"
                           "</IpConfiguration>";
const std::string timeText =
    "<TimeReferenceConfiguration Mode=\"Ntp\" NtpServer=\"a\" DateTime=\"2026-03-04T05:06:07\"/>";

// Changes, removes and doubles some of a text's letters; the same ones in each run.
class Spoiler
{
public:
    std::string spoil(std::string text)
    {
        for (unsigned changes = pick(6) + 1; changes > 0 && !text.empty(); --changes) {
            const std::size_t position = pick(text.size());
            switch (pick(4)) {
            case 0:
                text[position] = static_cast<char>(pick(256));
                break;
            case 1:
                text.erase(position, pick(12));
                break;
            case 2:
                text.insert(position, text.substr(pick(text.size()), pick(24)));
                break;
            default:
                text.insert(position, 1, "<>\"&/='"[pick(7)]);
            }
        }
        return text;
    }

private:
    unsigned pick(std::size_t below) { return static_cast<unsigned>(random() % below); }

    std::mt19937 random{20260304};
};

// Either an answer that looks like one, or a protocol Failure; nothing else.
template<typename Parse>
void expectAnswerOrFailure(const std::string& text, Parse parse)
{
    Spoiler spoiler;
    for (int round = 0; round < 3000; ++round) {
        const std::string spoiled = spoiler.spoil(text);
        try {
            parse(spoiled);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::protocol) << spoiled;
        }
    }
}

TEST(HostileTextTest, IsAVersionsReportOrAFailure)
{
    expectAnswerOrFailure(versionsText, [](const std::string& text) { (void)parseVersions(text); });
}

TEST(HostileTextTest, IsAnIpConfigurationOfTwoInterfacesOrAFailure)
{
    expectAnswerOrFailure(ipText,
                          [](const std::string& text) { EXPECT_EQ(parseIpConfiguration(text).interfaces.size(), 2); });
}

TEST(HostileTextTest, IsATimeReferenceInAKnownModeOrAFailure)
{
    expectAnswerOrFailure(timeText, [](const std::string& text) {
        const TimeMode mode = parseTimeReference(text).mode;
        EXPECT_TRUE(mode == TimeMode::ntp || mode == TimeMode::manual);
    });
}

TEST(HostileTextTest, InAFrameIsATextOrAFailure)
{
    const Bytes section = textSection(versionsText);
    const std::string asText(reinterpret_cast<const char*>(section.data()), section.size());
    expectAnswerOrFailure(asText, [](const std::string& text) {
        Reply reply;
        reply.header.messageFormat = section8Bit;
        reply.payload.resize(text.size());
        std::memcpy(reply.payload.data(), text.data(), text.size());
        EXPECT_EQ(textOf(reply).size() + 5, text.size());
    });
}

TEST(HostileTextTest, PrintsNothing)
{
    const std::string wide("<\0\0\0\xFF\xFF\xFF\xFF", 8);
    testing::internal::CaptureStderr();
    EXPECT_THROW((void)parseVersions(wide), Failure);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
