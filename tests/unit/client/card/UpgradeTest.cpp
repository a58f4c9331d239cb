// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Upgrade.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"
#include "unit/client/card/CardInLoop.h"
#include "unit/client/card/RecordingObserver.h"

#include <cerrno>

namespace
{

constexpr const char* newKernel = "<Versions>\n\t<Component Id=\"kernel\" Version=\"KERN-7.0.0\"/>\n</Versions>";
const Failure unconfirmed{ExitCode::noAnswer, Category::closed, "waiting for the card to unpack", "it hung up"};

class UpgradeTest : public SystemTest
{
protected:
    Task<void> await(Seconds patience, std::optional<Failure> why)
    {
        versions = co_await awaitUpgrade(network, observer, card.endpoint, patience, std::move(why));
    }

    Task<void> beInterruptedInsteadOfAnswering()
    {
        co_await card.takeRequest();
        loop.interrupt();
    }

    // How it ends with a card that takes a connection for each of these texts.
    Failure endWith(std::vector<std::string> texts, Status status = Status::success, std::optional<Failure> why = {})
    {
        return card.beside(card.serve(std::move(texts), status), await(Seconds(60), std::move(why)));
    }

    // How it ends on a machine that gives no socket, when no time is left.
    Failure endInVain(std::optional<Failure> why = {})
    {
        failNext("socket", EMFILE);
        return failureOf([&] { loop.run(await(Seconds(0), std::move(why))); });
    }

    EventLoop loop;
    Network network{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {}}};
    CardInLoop card{loop};
    RecordingObserver observer;
    Versions versions;
};

TEST_F(UpgradeTest, TellsTheVersionsOnceTheCardServesAgain)
{
    EXPECT_EQ(endWith({"", "", newKernel}).code, ExitCode::ok);
    EXPECT_EQ(versions.components, (std::vector<Component>{{"kernel", "KERN-7.0.0"}}));
    EXPECT_EQ(card.served, 3);
    EXPECT_EQ(observer.phases, std::vector<std::string>{"upgrading"});
    EXPECT_EQ(observer.lastPercent, 100);
}

TEST_F(UpgradeTest, TellsThemAlsoOfACardThatHasNotConfirmed)
{
    EXPECT_EQ(endWith({newKernel}, Status::success, unconfirmed).code, ExitCode::ok);
    EXPECT_EQ(versions.components.size(), 1U);
}

TEST_F(UpgradeTest, AsksNoMoreWhereARefusalIsTheAnswer)
{
    const Failure failure = endWith({"no"}, Status::failure);
    EXPECT_EQ(failure.code, ExitCode::noAnswer);
    EXPECT_EQ(failure.category, Category::refusedByCard);
    EXPECT_EQ(failure.phase, "waiting for the end of the upgrade");
    EXPECT_TRUE(failure.hint.starts_with("the card took the archive, but it is not known whether it upgraded: "))
        << failure.hint;
    EXPECT_EQ(card.served, 1);
}

TEST_F(UpgradeTest, AsksNoMoreWhereNonsenseIsTheAnswer)
{
    EXPECT_EQ(endWith({"<Nonsense/>"}).category, Category::garbage);
    EXPECT_EQ(card.served, 1);
}

TEST_F(UpgradeTest, AsksOnceHoweverLittleTimeThereIs)
{
    const Failure failure = endInVain();
    EXPECT_EQ(failure.code, ExitCode::noAnswer);
    EXPECT_EQ(failure.category, Category::noSocket);
    EXPECT_EQ(failure.phase, "waiting for the end of the upgrade");
}

TEST_F(UpgradeTest, TellsWhyACardDidNotConfirmIfItCannotBeAskedEither)
{
    const Failure failure = endInVain(unconfirmed);
    EXPECT_EQ(failure.category, unconfirmed.category);
    EXPECT_EQ(failure.phase, unconfirmed.phase);
    EXPECT_EQ(failure.hint,
              errorText("it hung up; what the card has now is not known: no socket can be opened: ", EMFILE));
}

TEST_F(UpgradeTest, TellsAnInterruptionByWhatTheCardConfirmed)
{
    const Failure confirmed = card.beside(beInterruptedInsteadOfAnswering(), await(Seconds(60), {}));
    EXPECT_EQ(confirmed.code, ExitCode::interrupted);
    EXPECT_EQ(confirmed.phase, "waiting for the end of the upgrade");
    EXPECT_EQ(confirmed.hint, "the card goes on with the upgrade all the same");
    const Failure interrupted = card.beside(beInterruptedInsteadOfAnswering(), await(Seconds(60), unconfirmed));
    EXPECT_EQ(interrupted.hint, "the card may go on with the upgrade all the same: it has not confirmed the archive");
}

} // namespace
