// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "core/Daemon.h"
#include "net/SetupError.h"
#include "support/SystemTest.h"
#include "util/Hardened.h"

#include <csignal>
#include <cstring>

#include <syslog.h>
#include <unistd.h>

namespace
{

// A whole life of the daemon. No socket of it is bound, so that neither its port nor its devices need be free here.
class DaemonTest : public SystemTest
{
protected:
    DaemonTest()
    {
        uci.set("system.@system[0].hostname", "card7");
        sandbox.makeDirectory("/tmp/upgrade");
    }

    void scriptSockets() const
    {
        for (int i = 0; i < 3; ++i) {
            returnNext("bind", 0);
        }
        for (int i = 0; i < 7; ++i) {
            returnNext("setsockopt", 0);
        }
    }

    // Ends because select() fails after so many passes.
    int live(int passes = 0)
    {
        scriptSockets();
        passNext("select", passes);
        failNext("select", EINTR);
        return runDaemon();
    }

    [[nodiscard]] static std::string closed(int descriptor)
    {
        return "Socket (" + std::to_string(descriptor) + ") successfully closed";
    }
};

struct sigaction brokenPipeAction()
{
    struct sigaction action = {};
    sigaction(SIGPIPE, nullptr, &action);
    return action;
}

} // namespace

TEST_F(DaemonTest, OpensTheLogWithProcessIdAndConsole)
{
    live();
    EXPECT_EQ(callsTo("openlog"), (std::vector<std::string>{"tarveld " + std::to_string(LOG_PID | LOG_CONS) + " " +
                                                            std::to_string(LOG_DAEMON)}));
}

TEST_F(DaemonTest, LogsItsStartAndItsBuildFirst)
{
    live();
    EXPECT_EQ(log.lines()[0], (CapturedLog::Line{LOG_INFO, "Starting..."}));
    EXPECT_EQ(log.lines()[1], (CapturedLog::Line{LOG_INFO, "SVN revision: 1795:4041"}));
}

TEST_F(DaemonTest, LogsNoCreationOfADirectoryThatIsThere)
{
    live();
    EXPECT_EQ(log.lines()[2], (CapturedLog::Line{LOG_INFO, "Working directory successfully changed to /tmp/upgrade"}));
}

TEST_F(DaemonTest, CreatesTheWorkingDirectory)
{
    returnNext("mkdir", 0);
    live();
    EXPECT_EQ(callsTo("mkdir"), Texts{hardened ? "/tmp/upgrade 0700" : "/tmp/upgrade 0777"});
    EXPECT_EQ(log.lines()[2], (CapturedLog::Line{LOG_INFO, "/tmp/upgrade successfully created"}));
    EXPECT_EQ(log.lines()[3], (CapturedLog::Line{LOG_INFO, "Working directory successfully changed to /tmp/upgrade"}));
}

TEST_F(DaemonTest, EndsIfTheWorkingDirectoryCannotBeCreated)
{
    failNext("mkdir", EROFS);
    EXPECT_EQ(runDaemon(), 1);
    EXPECT_EQ(log.lines().back(),
              (CapturedLog::Line{LOG_WARNING, std::string("mkdir() failed: ") + std::strerror(EROFS)}));
    EXPECT_TRUE(callsTo("socket").empty());
}

TEST_F(DaemonTest, EndsIfTheWorkingDirectoryCannotBeEntered)
{
    failNext("chdir", EACCES);
    EXPECT_EQ(runDaemon(), 1);
    EXPECT_EQ(log.lines().back(),
              (CapturedLog::Line{LOG_WARNING, std::string("chdir() failed: ") + std::strerror(EACCES)}));
    EXPECT_TRUE(callsTo("socket").empty());
}

TEST_F(DaemonTest, IgnoresBrokenPipes)
{
    const struct sigaction before = brokenPipeAction();
    ignoreBrokenPipe();
    const struct sigaction after = brokenPipeAction();
    sigaction(SIGPIPE, &before, nullptr);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
}

TEST_F(DaemonTest, InstallsItsSignalDispositionBeforeTheSockets)
{
    live();
    EXPECT_EQ(orderOf({"sigaction", "socket"}).front(), "sigaction: SIGPIPE SIG_IGN");
}

TEST_F(DaemonTest, GoesOnIfTheSignalDispositionCannotBeSet)
{
    failNext("sigaction", EINVAL);
    live();
    EXPECT_EQ(log.warnings().front(), std::string("sigaction() FAILED: ") + std::strerror(EINVAL));
    EXPECT_FALSE(callsTo("socket").empty());
}

TEST_F(DaemonTest, AsksForTheOldestXmlLibraryItIsMadeFor)
{
    live();
    EXPECT_EQ(callsTo("xmlCheckVersion"), (std::vector<std::string>{"20909"}));
}

TEST_F(DaemonTest, ChecksTheXmlLibraryBetweenTheSignalAndTheSockets)
{
    live();
    const std::vector<std::string> calls = orderOf({"sigaction", "xmlCheckVersion", "system", "socket"});
    EXPECT_EQ(std::vector<std::string>(calls.begin(), calls.begin() + 2),
              (std::vector<std::string>{"sigaction: SIGPIPE SIG_IGN", "xmlCheckVersion: 20909"}));
}

TEST_F(DaemonTest, ReadsTheHostNameOnceForEachDatagramService)
{
    live();
    EXPECT_EQ(shell.commands(), (std::vector<std::string>(2, "uci -q get system.@system[0].hostname > /tmp/uci.tmp")));
}

TEST_F(DaemonTest, EndsTheProcessWithoutAHostName)
{
    uci.remove("system.@system[0].hostname");
    EXPECT_DEATH(runDaemon(), "");
}

TEST_F(DaemonTest, CatchesNoFailureToSetASocketUp)
{
    failNext("bind", EADDRINUSE);
    EXPECT_THROW(runDaemon(), SetupError);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("Bind() failed: ") + std::strerror(EADDRINUSE)}));
}

TEST_F(DaemonTest, BindsAllSocketsToItsPort)
{
    live();
    EXPECT_EQ(callsTo("bind"), (std::vector<std::string>(3, "0.0.0.0:50003")));
}

TEST_F(DaemonTest, BindsTheDatagramSocketsToOneDeviceEachAndLetsThemBroadcast)
{
    live();
    EXPECT_EQ(callsTo("setsockopt"),
              (std::vector<std::string>{"SO_REUSEADDR 1", "SO_REUSEADDR 1", "SO_BINDTODEVICE eth0", "SO_BROADCAST 1",
                                        "SO_REUSEADDR 1", "SO_BINDTODEVICE eth1", "SO_BROADCAST 1"}));
}

TEST_F(DaemonTest, LogsItsStartUpInOrder)
{
    live(1);
    const std::vector<std::string> texts = log.texts();
    const int first = std::stoi(texts.at(3).substr(std::string("Stream socket (").size()));
    const auto stream = [](int fd) { return "Stream socket (" + std::to_string(fd) + ") successfully created"; };
    const auto datagram = [](int fd) { return "Datagram socket (" + std::to_string(fd) + ") successfully created"; };
    EXPECT_EQ(std::vector<std::string>(texts.begin() + 3, texts.begin() + 18),
              (std::vector<std::string>{stream(first), stream(first + 1), "Server socket options successfully set",
                                        "Bind() was successful", "Listen on port 50003 was successful",
                                        datagram(first + 2), "Server socket options successfully set",
                                        "Bind() was successful", "BindToDevice (eth0) was successful",
                                        datagram(first + 3), "Server socket options successfully set",
                                        "Bind() was successful", "BindToDevice (eth1) was successful",
                                        std::string("recv() failed: ") + std::strerror(ENOTCONN), closed(first)}));
}

TEST_F(DaemonTest, ClosesItsServicesAndLogsAnErrorInTheEnd)
{
    EXPECT_EQ(live(1), 1);
    const std::vector<std::string> texts = log.texts();
    const int first = std::stoi(texts.at(3).substr(std::string("Stream socket (").size()));
    EXPECT_EQ(
        std::vector<std::string>(texts.end() - 5, texts.end()),
        (std::vector<std::string>{std::string("select() failed: ") + std::strerror(EINTR), closed(first + 1),
                                  closed(first + 2), closed(first + 3), "tarvel-daemon terminated unexpectedly!"}));
    EXPECT_EQ(log.lines().back().level, LOG_ERR);
}

TEST_F(DaemonTest, ClosesThePeerSocketBeforeTheServerSocket)
{
    live();
    const std::vector<std::string> texts = log.texts();
    const int first = std::stoi(texts.at(3).substr(std::string("Stream socket (").size()));
    EXPECT_EQ(std::vector<std::string>(texts.end() - 5, texts.end() - 3),
              (std::vector<std::string>{closed(first), closed(first + 1)}));
}

TEST_F(DaemonTest, CleansTheXmlLibraryUpBetweenTheLastSocketAndTheLastLine)
{
    live();
    const std::vector<std::string> calls = orderOf({"close", "xmlCleanupParser", "log"});
    ASSERT_GE(calls.size(), 4U);
    EXPECT_EQ(calls[calls.size() - 4].substr(0, 7), "close: ");
    EXPECT_EQ(calls[calls.size() - 3].substr(0, 5), "log: ");
    EXPECT_EQ(std::vector<std::string>(calls.end() - 2, calls.end()),
              (std::vector<std::string>{"xmlCleanupParser: ", "log: tarvel-daemon terminated unexpectedly!"}));
}

TEST_F(DaemonTest, ClosesTheLogLast)
{
    live();
    EXPECT_EQ(orderOf({"log", "closelog"}).back(), "closelog: ");
}

TEST_F(DaemonTest, AlwaysReturnsOne)
{
    EXPECT_EQ(live(), 1);
}
