// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/SetupError.h"

#include "net/TcpServer.h"
#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <thread>

namespace
{

using SetupErrorTest = SystemTest;

// Ends a program that nobody stops as the daemon ends: the error leaves the outermost function of its thread.
void listenInAThread()
{
    std::thread([] { const TcpServer server(0); }).join();
}

TEST_F(SetupErrorTest, TheMessageIsAWarningWithTheTextOfErrno)
{
    errno = ENFILE;
    EXPECT_THROW(failSetup("Bind() failed"), SetupError);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{4, errorText("Bind() failed: ", ENFILE)}}));
}

TEST_F(SetupErrorTest, TheMessageIsNotTakenForAFormat)
{
    errno = ENFILE;
    EXPECT_THROW(failSetup("%s%n"), SetupError);
    EXPECT_EQ(log.warnings(), std::vector<std::string>{errorText("%s%n: ", ENFILE)});
}

TEST_F(SetupErrorTest, AProcessThatDoesNotCatchItEndsAbnormally)
{
    EXPECT_EXIT(
        {
            failNext("bind", EADDRINUSE);
            listenInAThread();
        },
        testing::KilledBySignal(SIGABRT), "");
}

TEST_F(SetupErrorTest, AProcessThatDoesNotCatchItClosesNothingAfterTheMessage)
{
    static const CapturedLog* captured = nullptr;
    captured = &log;
    EXPECT_EXIT(
        {
            std::set_terminate([] {
                std::fprintf(stderr, "%s\n", captured->texts().back().c_str());
                std::abort();
            });
            failNext("bind", EADDRINUSE);
            listenInAThread();
        },
        testing::KilledBySignal(SIGABRT), "^Bind\\(\\) failed: [^\n]*\n");
}

} // namespace
