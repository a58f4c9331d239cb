// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "core/Daemon.h"

#include "core/EventLoop.h"
#include "protocol/Commands.h"
#include "services/StagingMarker.h"
#include "services/TarvelServiceTcp.h"
#include "services/TarvelServiceUdp.h"
#include "services/XmlReader.h"
#include "util/Hardened.h"
#include "util/Log.h"

#include <cerrno>
#include <csignal>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr const char* ident = "tarveld";
constexpr const char* build = "SVN revision: 1795:4041";
constexpr const char* workingDirectory = "/tmp/upgrade"; // a firmware upload is stored here by relative name

constexpr ServiceConfig tcpConfig = {.port = cardPort,
                                     .deviceNumber = cardDevice,
                                     .serviceNumber = cardService,
                                     .bindDevice = 0,
                                     .deviceName = nullptr,
                                     .broadcast = 0};

constexpr ServiceConfig udpConfig(const char* device)
{
    return {.port = cardPort,
            .deviceNumber = cardDevice,
            .serviceNumber = cardService,
            .bindDevice = 1,
            .deviceName = device,
            .broadcast = 1};
}

bool enterWorkingDirectory()
{
    constexpr mode_t mode = hardened ? 0700 : 0777;
    if (mkdir(workingDirectory, mode) == 0) {
        logInfo("%s successfully created", workingDirectory);
    } else if (errno != EEXIST) {
        logErrno("mkdir() failed");
        return false;
    }
    if (chdir(workingDirectory) != 0) {
        logErrno("chdir() failed");
        return false;
    }
    logInfo("Working directory successfully changed to %s", workingDirectory);
    return true;
}

void serve(TarvelServiceTcp& tcp, TarvelServiceUdp& udpFirst, TarvelServiceUdp& udpSecond)
{
    tcp.open(tcpConfig);
    udpFirst.open(udpConfig("eth0"));
    udpSecond.open(udpConfig("eth1"));

    runEventLoop(tcp, udpFirst, udpSecond);

    tcp.close();
    udpFirst.close();
    udpSecond.close();
}

} // namespace

void ignoreBrokenPipe()
{
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    sigemptyset(&action.sa_mask);
    if (sigaction(SIGPIPE, &action, nullptr) == -1) {
        logErrno("sigaction() FAILED");
    }
}

int runDaemon()
{
    openLog(ident);
    logInfo("Starting...");
    logInfo("%s", build);
    if (!enterWorkingDirectory()) {
        return 1;
    }
    ignoreBrokenPipe();
    checkXmlLibrary();
    if constexpr (hardened) {
        revertLeftSettings();
    }

    TarvelServiceTcp tcp;
    TarvelServiceUdp udpFirst;
    TarvelServiceUdp udpSecond;
    serve(tcp, udpFirst, udpSecond);

    cleanUpXmlLibrary();
    logError("tarvel-daemon terminated unexpectedly!");
    closeLog();
    return 1;
}
