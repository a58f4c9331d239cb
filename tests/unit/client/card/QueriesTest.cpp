// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Queries.h"

#include "client/card/TimeChange.h"
#include "unit/client/card/CardInLoop.h"

#include <gtest/gtest.h>

namespace
{

// A card on the loopback interface that serves one connection after the other.
class QueriesTest : public testing::Test
{
protected:
    Failure beside(Task<void> cards, Task<void> work) { return card.beside(std::move(cards), std::move(work)); }
    Task<void> serve(std::vector<std::string> texts, Status status = Status::success)
    {
        return card.serve(std::move(texts), status);
    }
    Task<void> readVersions() { versions = co_await queryVersions(network, card.endpoint); }
    Task<void> setTime()
    {
        const TimeRequest wanted{TimeMode::ntp, "10.0.0.1", 0};
        outcome = co_await setTimeReference(network, card.endpoint, wanted, progress);
    }

    EventLoop loop;
    Network network{loop, {{Seconds(20), 2}, {}, DryRun::off}};
    CardInLoop card{loop};
    Versions versions;
    std::optional<TimeOutcome> outcome;
    TimeProgress progress;
};

constexpr const char* oneComponent = "<Versions>\n\t<Component Id=\"a\" Version=\"1\"/>\n</Versions>";

TEST_F(QueriesTest, ReadTheVersionsOfACard)
{
    beside(serve({oneComponent}), readVersions());
    EXPECT_EQ(versions.components, (std::vector<Component>{{"a", "1"}}));
}

TEST_F(QueriesTest, AreRepeatedIfTheCardClosesTheConnection)
{
    beside(serve({"", "", oneComponent}), readVersions());
    EXPECT_EQ(versions.components.size(), 1);
}

TEST_F(QueriesTest, AreRepeatedAsOftenAsThePolicySays)
{
    EXPECT_EQ(beside(serve({"", "", ""}), readVersions()).category, Category::closed);
}

TEST_F(QueriesTest, SayWhatWasAskedWhenTheCardRefuses)
{
    const Failure failure = beside(serve({"no"}, Status::failure), readVersions());
    EXPECT_EQ(failure.category, Category::refusedByCard);
    EXPECT_EQ(failure.phase, "waiting for the versions report");
}

TEST_F(QueriesTest, SayWhatWasAskedWhenTheAnswerMakesNoSense)
{
    const Failure failure = beside(serve({"<Nonsense/>"}), readVersions());
    EXPECT_EQ(failure.category, Category::garbage);
    EXPECT_EQ(failure.phase, "waiting for the versions report");
}

TEST_F(QueriesTest, SayThatTheConnectionFailedWhenNobodyListens)
{
    card.listener.close();
    const Failure failure = beside(serve({}), readVersions());
    EXPECT_EQ(failure.category, Category::refused);
    EXPECT_EQ(failure.phase, "connecting");
}

std::string timeOf(const std::string& mode)
{
    return "<TimeReferenceConfiguration Mode=\"" + mode +
           "\" NtpServer=\"10.0.0.1\" DateTime=\"2026-01-01T00:00:00\"/>";
}

TEST_F(QueriesTest, ReadAChangeBackWhoseConnectionClosesAndDoNotRepeatIt)
{
    beside(serve({"", timeOf("Ntp")}), setTime());
    EXPECT_EQ(outcome, TimeOutcome::doneLate);
    EXPECT_EQ(card.served, 2);
}

TEST_F(QueriesTest, TellAChangeThatWasNotDone)
{
    EXPECT_EQ(beside(serve({"", timeOf("Manual")}), setTime()).category, Category::notTaken);
}

TEST_F(QueriesTest, TellAChangeThatIsNotKnown)
{
    const Failure failure = beside(serve({"", "<Nonsense/>"}), setTime());
    EXPECT_EQ(failure.category, Category::closed);
    EXPECT_EQ(failure.phase, "setting the time reference");
    EXPECT_NE(failure.hint.find("what the card has now is not known"), std::string::npos);
}

TEST_F(QueriesTest, ReadBackAgainUntilTheCardAnswers)
{
    beside(serve({"", "", timeOf("Ntp")}), setTime());
    EXPECT_EQ(outcome, TimeOutcome::doneLate);
}

TEST(TimeToAnswerTest, IsAMinuteForACardThatAsksTimeServersFirst)
{
    EventLoop loop;
    const Network network(loop, {.policy = {Seconds(5), 2}, .interfaces = {}});
    EXPECT_EQ(timeToAnswer(network, TimeMode::ntp), Seconds(60));
    EXPECT_EQ(timeToAnswer(network, TimeMode::manual), Seconds(5));
}

TEST(TimeToAnswerTest, IsWhatTheUserGives)
{
    EventLoop loop;
    const Network network(loop, {.policy = {Seconds(7), 2}, .interfaces = {}, .timeoutGiven = true});
    EXPECT_EQ(timeToAnswer(network, TimeMode::ntp), Seconds(7));
    EXPECT_EQ(timeToAnswer(network, TimeMode::manual), Seconds(7));
}

} // namespace
