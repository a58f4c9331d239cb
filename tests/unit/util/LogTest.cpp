// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/Log.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"
#include "util/Hardened.h"

#include <cerrno>

#include <syslog.h>

using LogTest = SystemTest;

TEST_F(LogTest, TheLogIsOpenedForTheDaemonFacilityWithProcessIdAndConsole)
{
    openLog("card");
    EXPECT_EQ(callsTo("openlog"),
              Texts{"card " + std::to_string(LOG_PID | LOG_CONS) + " " + std::to_string(LOG_DAEMON)});
}

TEST_F(LogTest, TheLogIsClosed)
{
    closeLog();
    EXPECT_EQ(callsTo("closelog").size(), 1U);
}

TEST_F(LogTest, AnErrorHasLevelThree)
{
    logError("%s ended", "it");
    EXPECT_EQ(log.lines(), (Lines{{3, "it ended"}}));
}

TEST_F(LogTest, AWarningHasLevelFour)
{
    logWarning("%s failed", "it");
    EXPECT_EQ(log.lines(), (Lines{{4, "it failed"}}));
}

TEST_F(LogTest, AnInformationHasLevelSix)
{
    logInfo("%d bytes", 7);
    EXPECT_EQ(log.lines(), (Lines{{6, "7 bytes"}}));
}

TEST_F(LogTest, ADebugTextHasLevelSeven)
{
    logDebug("%d bytes", 7);
    EXPECT_EQ(log.lines(), (Lines{{7, "7 bytes"}}));
}

TEST_F(LogTest, AFailedCallIsAWarningThatEndsInTheTextOfErrno)
{
    errno = EPIPE;
    logErrno("call (%d) failed", 5);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("call (5) failed: ", EPIPE)}}));
}

TEST_F(LogTest, ALongTextDoesNotChangeTheErrorThatIsLogged)
{
    const std::string text(2000, 'x');
    errno = EIO;
    logErrno("%s", text.c_str());
    EXPECT_EQ(log.warnings(), Texts{errorText(text + ": ", EIO)});
}

TEST_F(LogTest, APeersControlCharactersStandInTheLineUnlessTheBuildIsHardened)
{
    logInfo("%s.", "a\nb");
    logErrno("\x1B[2J");
    const std::vector<std::string> lines = {log.lines()[0].text, log.lines()[1].text.substr(0, 4)};
    EXPECT_EQ(lines, hardened ? (Texts{"a?b.", "?[2J"}) : (Texts{"a\nb.", "\x1B[2J"}));
}

TEST_F(LogTest, EachCallIsOneLineInTheOrderOfTheCalls)
{
    logInfo("one");
    logWarning("two");
    EXPECT_EQ(log.lines(), (Lines{{LOG_INFO, "one"}, {LOG_WARNING, "two"}}));
}
