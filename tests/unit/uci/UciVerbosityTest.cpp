// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "uci/Uci.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>

namespace
{

class UciVerbosityTest : public SystemTest
{
protected:
    ~UciVerbosityTest() override { Uci::verbosity = 0; }

    CapturedOutput output;
};

TEST_F(UciVerbosityTest, AtLevelZeroTheToolIsToldToBeQuiet)
{
    Uci::Commit("network");
    EXPECT_EQ(shell.commands(), Texts{"uci -q commit network"});
}

TEST_F(UciVerbosityTest, AtLevelZeroAFailingCommandIsSilent)
{
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(Uci::Commit("network"), -1);
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(UciVerbosityTest, AtLevelZeroACommandKilledByASignalFailsSilently)
{
    shell.answerNext(killedBy(9));
    EXPECT_EQ(Uci::Commit("network"), -1);
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(UciVerbosityTest, AtLevelZeroAMissingShellIsReportedAllTheSame)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(Uci::Commit("network"), -1);
    EXPECT_EQ(output.err(), errorText("system() FAILED: ", ENOMEM) + "\n");
}

TEST_F(UciVerbosityTest, AtLevelOneTheToolMaySpeak)
{
    Uci::verbosity = 1;
    EXPECT_EQ(Uci::Commit("network"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci commit network"});
}

TEST_F(UciVerbosityTest, AtLevelOneAFailingCommandIsReported)
{
    Uci::verbosity = 1;
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(Uci::Commit("network"), -1);
    EXPECT_EQ(output.err(), "uci commit network FAILED\n");
    EXPECT_EQ(output.out(), "");
}

TEST_F(UciVerbosityTest, AtLevelOneACommandKilledByASignalIsReported)
{
    Uci::verbosity = 1;
    shell.answerNext(killedBy(9));
    EXPECT_EQ(Uci::Commit("network"), -1);
    EXPECT_EQ(output.err(), "uci commit network FAILED\n");
}

TEST_F(UciVerbosityTest, AtLevelOneACommandThatSucceedsIsSilent)
{
    Uci::verbosity = 1;
    Uci::Commit("network");
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(UciVerbosityTest, AtLevelOneAMissingShellIsReportedOnce)
{
    Uci::verbosity = 1;
    shell.failToStart(ENOMEM);
    EXPECT_EQ(Uci::Commit("network"), -1);
    EXPECT_EQ(output.err(), errorText("system() FAILED: ", ENOMEM) + "\n");
}

TEST_F(UciVerbosityTest, AtLevelTwoEveryCommandIsEchoed)
{
    Uci::verbosity = 2;
    Uci::Commit("network");
    EXPECT_EQ(output.out(), "Executing: uci commit network\n");
    EXPECT_EQ(output.err(), "");
}

TEST_F(UciVerbosityTest, AtLevelTwoAFailingCommandIsEchoedAndReportedWithoutTheQuietFlag)
{
    Uci::verbosity = 2;
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(Uci::Commit("network"), -1);
    EXPECT_EQ(output.out(), "Executing: uci commit network\n");
    EXPECT_EQ(output.err(), "uci commit network FAILED\n");
    EXPECT_EQ(shell.commands(), Texts{"uci commit network"});
}

TEST_F(UciVerbosityTest, AtLevelTwoTheEchoStandsThereBeforeTheCommandRuns)
{
    Uci::verbosity = 2;
    std::string before;
    shell.respondWith([&](std::string_view) {
        before = output.out();
        return FakeSystem::Answer{};
    });
    Uci::Commit("network");
    EXPECT_EQ(before, "Executing: uci commit network\n");
}

TEST_F(UciVerbosityTest, HigherLevelsAreLikeLevelTwo)
{
    Uci::verbosity = 7;
    Uci::Commit("network");
    EXPECT_EQ(output.out(), "Executing: uci commit network\n");
}

TEST_F(UciVerbosityTest, NothingIsEverLogged)
{
    Uci::verbosity = 2;
    shell.answerNext(exitStatus(1));
    Uci::Commit("network");
    EXPECT_TRUE(log.lines().empty());
}

} // namespace
