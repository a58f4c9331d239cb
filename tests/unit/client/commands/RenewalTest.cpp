// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

#include "client/card/Renewal.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Parallel.h"
#include "client/wire/Network.h"
#include "unit/client/FailureOf.h"

namespace
{

class RenewalTest : public ProgramFixture
{
protected:
    std::vector<Identified> identify(const std::vector<std::string>& names)
    {
        std::vector<Target> targets;
        for (const std::string& name : names) {
            targets.push_back({name, name, std::nullopt});
        }
        return loop.run(Identification(network, way, caution).run(targets));
    }
    Identified identified() { return identify({"card1"}).front(); }
    static void age(Identified& one) { one.asOf -= std::chrono::duration_cast<Clock::duration>(Renewal::longest); }
    Failure failureOfRenewal(Identified& one)
    {
        Renewal renewal(network, way, caution);
        return failureOf([&] { loop.run(renewal.renew(one)); });
    }
    std::size_t asked() { return card.texts(ipGet).size(); }

    EventLoop loop;
    Network network{loop, NetworkOptions{.policy = {Seconds(5), 0}, .interfaces = {"lo"}}};
    Way way = Way::byName;
    Caution caution;
};

TEST_F(RenewalTest, AsksAgainForACardThatHasWaited)
{
    Identified one = identified();
    age(one);
    Renewal renewal(network, way, caution);
    loop.run(renewal.renew(one));
    EXPECT_EQ(asked(), 2U);
    EXPECT_LT(Clock::now() - one.asOf, Renewal::longest);
}

TEST_F(RenewalTest, BelievesWhatIsFresh)
{
    Identified one = identified();
    one.asOf = Clock::now() + std::chrono::hours(1); // however slow this machine is
    Renewal renewal(network, way, caution);
    loop.run(renewal.renew(one));
    EXPECT_EQ(asked(), 1U);
}

TEST_F(RenewalTest, RefusesACardThatTellsOtherSettings)
{
    Identified one = identified();
    age(one);
    card.answer(ipGet, says(ipXml("127.0.0.9")));
    const Failure failure = failureOfRenewal(one);
    EXPECT_EQ(failure.code, ExitCode::ambiguous);
    EXPECT_TRUE(failure.hint.ends_with("nothing was sent, --force does it all the same")) << failure.hint;
}

TEST_F(RenewalTest, GoesOnWithAWarningIfTheUserKnowsBetter)
{
    caution.force = true;
    Identified one = identified();
    age(one);
    card.answer(ipGet, says(ipXml("127.0.0.9")));
    Renewal renewal(network, way, caution);
    loop.run(renewal.renew(one));
    EXPECT_EQ(one.warnings.size(), 1U);
}

TEST_F(RenewalTest, RefusesACardOfWhichThereAreTwoNow)
{
    Identified one = identified();
    age(one);
    FakeCard::Answer twice = says(ipXml("127.0.0.1"));
    twice.copies = 2;
    card.answer(ipGet, twice);
    EXPECT_EQ(failureOfRenewal(one).code, ExitCode::ambiguous);
}

TEST_F(RenewalTest, RefusesACardThatIsSilentNowUnlessItNeedNotBeHeard)
{
    for (const Way each : {Way::byName, Way::byNameUnheard}) {
        way = each;
        card.answer(ipGet, says(ipXml("127.0.0.1")));
        Identified one = identified();
        age(one);
        card.answer(ipGet, {.hangsUp = true});
        Network hasty{loop, NetworkOptions{.policy = {Seconds(0.1), 0}, .interfaces = {"lo"}}};
        Renewal renewal(hasty, way, caution);
        if (way == Way::byName) {
            EXPECT_EQ(failureOf([&] { loop.run(renewal.renew(one)); }).code, ExitCode::noAnswer);
        } else {
            loop.run(renewal.renew(one));
            EXPECT_TRUE(one.target.heard); // what is known of it stays known
        }
    }
}

TEST_F(RenewalTest, TellsWhereACardWasHeardThatIsSilentNow)
{
    sandbox.write("/tmp/state/tarvelctl/heard", "card1 127.0.0.1 1000000000\n");
    Identified one = identified();
    EXPECT_TRUE(one.silence.empty());
    age(one);
    card.answer(ipGet, {.hangsUp = true});
    Network hasty{loop, NetworkOptions{.policy = {Seconds(0.1), 0}, .interfaces = {"lo"}}};
    Renewal renewal(hasty, way, caution);
    EXPECT_EQ(failureOf([&] { loop.run(renewal.renew(one)); }).category, Category::notHeard);
    ASSERT_TRUE(one.refusal);
    ASSERT_FALSE(one.silence.empty());
    EXPECT_EQ(one.silence.front().name, "last_address");
}

TEST_F(RenewalTest, ProbesOnceForAllWhoseTurnComesTogether)
{
    way = Way::overTcp;
    std::vector<Identified> both = {identified(), identified()};
    const std::size_t before = card.texts(probe).size();
    for (Identified& one : both) {
        EXPECT_FALSE(one.refusal);
        age(one);
    }
    Renewal renewal(network, way, caution);
    loop.run(inParallel(loop, 2, 2, [&](std::size_t index) { return renewal.renew(both[index]); }));
    EXPECT_EQ(card.texts(probe).size(), before + 1);
}

} // namespace
