// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpChange.h"

#include "support/Environment.h"
#include "support/SystemTest.h"
#include "support/VirtualTime.h"
#include "unit/client/CardAnswers.h"
#include "unit/client/FailureOf.h"
#include "unit/client/card/RecordingObserver.h"

#include <cerrno>

namespace
{

const InterfaceConfig former{"VemkEth1", IpMode::fixed, "127.0.0.1", "255.0.0.0", std::nullopt};
const InterfaceConfig elsewhere{"VemkEth1", IpMode::fixed, "10.0.0.9", "255.0.0.0", std::nullopt};
const InterfaceConfig leased{"VemkEth1", IpMode::dhcp, std::nullopt, std::nullopt, std::nullopt};
const InterfaceConfig otherFormer{"VemkEth2", IpMode::fixed, "10.0.1.11", "255.0.0.0", std::nullopt};
const InterfaceConfig otherWanted{"VemkEth2", IpMode::fixed, "10.0.1.99", "255.0.0.0", std::nullopt};

// A card whose every answer comes from 127.0.0.1, whatever it says that it has; at first it says to have that.
class IpChangeTest : public SystemTest
{
protected:
    IpChangeTest() { card.answer(ipGet, says(ipXml("127.0.0.1"))); }

    // The card confirms a change, and has it from then on.
    void takesChanges()
    {
        card.behave(ipSet, [this](const FakeCard::Request& request) {
            has(request);
            return done;
        });
    }

    void has(const FakeCard::Request& request)
    {
        const std::size_t start = request.text.find("<Interface");
        const std::size_t end = request.text.find("</IpConfiguration>");
        card.answer(ipGet, says(ipXmlWith(request.text.substr(start, end - start))));
    }

    static IpPlan plan(std::optional<InterfaceConfig> now, InterfaceConfig wanted)
    {
        return {.now = now, .wanted = std::move(wanted), .effects = {}, .rollback = now, .noRollback = {}};
    }

    IpOutcome run(IpPlan what, Seconds time = patient) { return loop.run(change.run(std::move(what), time)); }
    Failure failureOfRun(IpPlan what, Seconds time = patient)
    {
        return failureOf([&] { run(std::move(what), time); });
    }

    // All requests that were sent before are heard then.
    void settle()
    {
        const std::size_t asked = card.texts(reboot).size();
        card.answer(reboot, done);
        loop.run(network.askByName("card1", textRequest(CommandId::reboot, "<x/>")));
        ASSERT_GT(card.texts(reboot).size(), asked);
    }

    // What the client writes down is of this test alone.
    const Environment state{"XDG_STATE_HOME", sandbox.path("/tmp/state")};
    static constexpr Seconds patient{60}; // none of the tests that use it waits for its end
    FakeCard card;
    EventLoop loop;
    RecordingObserver observer;
    Network network{loop, {{Seconds(20), 0}, {"lo"}}};
    IpChange change{network, observer, "card1"};
    Network hasty{loop, {{Seconds(1), 0}, {"lo"}}};
    IpChange hastyChange{hasty, observer, "card1"};
};

TEST_F(IpChangeTest, ReadsWhatTheCardHas)
{
    const std::optional<IpConfiguration> now = loop.run(change.readNow());
    ASSERT_TRUE(now);
    ASSERT_NE(now->find("VemkEth1"), nullptr);
    EXPECT_EQ(*now->find("VemkEth1"), former);
    EXPECT_FALSE(change.isSent());
}

TEST_F(IpChangeTest, ReadsNothingOfACardThatRefusesToTell)
{
    card.answer(ipGet, refusal);
    EXPECT_FALSE(loop.run(change.readNow()).has_value());
}

TEST_F(IpChangeTest, ReadsNoNonsense)
{
    card.answer(ipGet, says("<Nonsense/>"));
    EXPECT_EQ(failureOf([&] { loop.run(change.readNow()); }).category, Category::garbage);
}

TEST_F(IpChangeTest, IsAppliedWhenTheCardAnswersFromTheNewAddress)
{
    takesChanges();
    card.answer(ipGet, says(ipXml("10.0.0.9")));
    EXPECT_EQ(run(plan(elsewhere, former)), IpOutcome::applied);
    EXPECT_EQ(change.lastSeen(), former);
    EXPECT_TRUE(change.isSent());
    EXPECT_EQ(card.texts(ipSet).size(), 1U);
    EXPECT_TRUE(observer.notes.empty());
    EXPECT_TRUE(observer.warnings.empty());
}

TEST_F(IpChangeTest, RemembersWhereTheCardIsHeardAfterwards)
{
    takesChanges();
    card.answer(ipGet, says(ipXml("10.0.0.9")));
    LastHeard before;
    before.note("card1", {"10.0.0.9", 1, "lo"});
    before.save();
    EXPECT_EQ(run(plan(elsewhere, former)), IpOutcome::applied);
    EXPECT_EQ(LastHeard::load().of("card1")->address, "127.0.0.1");
}

TEST_F(IpChangeTest, IsStoredWhenOnlyTheSettingsOfAnInterfaceThatIsNotHeardSayIt)
{
    card.behave(ipSet, [this](const FakeCard::Request&) {
        card.answer(ipGet,
                    says(R"(<IpConfiguration From="card1" To="tarvelctl">)" + interfaceXml("VemkEth1", "127.0.0.1") +
                         interfaceXml("VemkEth2", "10.0.1.99") + "</IpConfiguration>"));
        return done;
    });
    EXPECT_EQ(run(plan(otherFormer, otherWanted)), IpOutcome::stored);
    EXPECT_EQ(change.lastSeen(), otherWanted);
}

TEST_F(IpChangeTest, LooksForTheEffectOfAChangeThatIsNotConfirmed)
{
    card.answer(ipGet, says(ipXml("10.0.0.9")));
    card.behave(ipSet, [this](const FakeCard::Request& request) {
        has(request);
        return hangUp;
    });
    EXPECT_EQ(loop.run(hastyChange.run(plan(elsewhere, former), patient)), IpOutcome::applied);
    EXPECT_EQ(observer.notes, Texts{"no answer to the change; looking for its effect"});
}

TEST_F(IpChangeTest, ThrowsWhatTheCardRefuses)
{
    card.answer(ipSet, refusal);
    const Failure failure = failureOfRun(plan(elsewhere, former));
    EXPECT_EQ(failure.category, Category::refusedByCard);
    EXPECT_EQ(failure.phase, "changing the IP configuration");
    EXPECT_EQ(card.texts(ipSet).size(), 1U);
}

TEST_F(IpChangeTest, RollsBackACardThatDoesNotFollow)
{
    card.answer(ipSet, done);
    EXPECT_EQ(run(plan(former, elsewhere), Seconds(0)), IpOutcome::rolledBack);
    EXPECT_EQ(observer.warnings, Texts{"not back with the new configuration; rolling back"});
    ASSERT_EQ(card.texts(ipSet).size(), 2U);
    EXPECT_EQ(card.texts(ipSet).back(), ipConfigSetXml("card1", {former}));
}

TEST_F(IpChangeTest, KnowsARollbackThatOnlyTheSettingsSay)
{
    card.answer(ipSet, done);
    EXPECT_EQ(run(plan(otherFormer, otherWanted), Seconds(0)), IpOutcome::rollbackStored);
}

TEST_F(IpChangeTest, IsLostWithoutAWayBack)
{
    card.answer(ipSet, done);
    IpPlan withoutWayBack = plan(former, elsewhere);
    withoutWayBack.rollback.reset();
    EXPECT_EQ(run(withoutWayBack, Seconds(0)), IpOutcome::lost);
    EXPECT_EQ(card.texts(ipSet).size(), 1U);
    EXPECT_TRUE(change.rollbackRefusal().empty());
}

TEST_F(IpChangeTest, IsLostIfTheCardRefusesItsFormerConfiguration)
{
    card.behave(ipSet, [this](const FakeCard::Request&) {
        card.answer(ipSet, refusal);
        return done;
    });
    EXPECT_EQ(run(plan(former, elsewhere), Seconds(0)), IpOutcome::lost);
    EXPECT_NE(change.rollbackRefusal(), "");
}

TEST_F(IpChangeTest, HasHalfAMinuteForTheRollbackHoweverShortTheTime)
{
    card.answer(ipGet, hangUp);
    card.answer(ipSet, hangUp);
    {
        const VirtualTime time;
        EXPECT_EQ(loop.run(hastyChange.run(plan(former, elsewhere), Seconds(1))), IpOutcome::lost);
        EXPECT_GE(Seconds(time.passed()), Seconds(33)); // with the look before, the change, and the time for that
    }
    settle();
    EXPECT_GE(card.texts(ipSet).size(), 3U); // the change, and the rollback until it is confirmed
}

TEST_F(IpChangeTest, DoesNotKnowTheOutcomeIfThisMachineCannotAsk)
{
    card.behave(ipSet, [](const FakeCard::Request&) {
        failAlways("socket", EMFILE);
        return done;
    });
    const Failure failure = failureOfRun(plan(former, elsewhere));
    EXPECT_EQ(failure.category, Category::noSocket);
    EXPECT_TRUE(change.isSent());
    const Failure told = change.explain(failure);
    EXPECT_EQ(told.code, ExitCode::noAnswer);
    EXPECT_TRUE(told.hint.starts_with("the change was sent, but what the card has now is not known: ")) << told.hint;
}

TEST_F(IpChangeTest, IsNotSentByAMachineThatCannot)
{
    Network none{loop, {{}, {"no-such-dev"}}};
    IpChange unsent{none, observer, "card1"};
    const Failure failure = failureOf([&] { loop.run(unsent.force(former, patient)); });
    EXPECT_EQ(failure.category, Category::noInterface);
    EXPECT_FALSE(unsent.isSent());
    EXPECT_EQ(unsent.explain(failure).code, failure.code);
    EXPECT_EQ(unsent.explain(failure).hint, failure.hint);
}

TEST_F(IpChangeTest, TellsWhatACardSaidAsItIs)
{
    card.answer(ipSet, refusal);
    const Failure failure = failureOfRun(plan(elsewhere, former));
    EXPECT_EQ(change.explain(failure).code, ExitCode::refusedByCard);
    EXPECT_EQ(change.explain(failure).hint, failure.hint);
}

TEST_F(IpChangeTest, ForcesWhatTheCardTakesAtOnceWithOneRequest)
{
    takesChanges();
    card.answer(ipGet, hangUp);
    EXPECT_EQ(loop.run(change.force(former, patient)), Proof::applied);
    EXPECT_EQ(card.texts(ipSet), Texts{ipConfigSetXml("card1", {former})});
    EXPECT_EQ(change.lastSeen(), former);
}

TEST_F(IpChangeTest, ForcesWhatIsRefusedNoFurther)
{
    card.answer(ipSet, refusal);
    EXPECT_EQ(failureOf([&] { loop.run(change.force(former, patient)); }).category, Category::refusedByCard);
    EXPECT_EQ(card.texts(ipSet).size(), 1U);
}

TEST_F(IpChangeTest, ForcesACardThatIsSilentUntilTheTimeIsOver)
{
    card.answer(ipSet, hangUp);
    card.answer(ipGet, hangUp);
    {
        const VirtualTime time;
        EXPECT_EQ(loop.run(hastyChange.force(leased, Seconds(100))), Proof::none);
        EXPECT_GE(Seconds(time.passed()), Seconds(100));
    }
    settle();
    // With growing pauses: each one restarts the network of a card that has only not answered yet.
    EXPECT_GE(card.texts(ipSet).size(), 3U);
    EXPECT_LE(card.texts(ipSet).size(), 6U);
    EXPECT_EQ(hastyChange.lastSeen(), std::nullopt);
}

} // namespace
