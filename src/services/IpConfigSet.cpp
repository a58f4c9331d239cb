// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/IpConfigSet.h"

#include "services/Envelope.h"
#include "services/IpConfigParser.h"
#include "services/IpInterfaces.h"
#include "services/StagingMarker.h"
#include "services/TarvelServiceUdp.h"
#include "services/XmlReader.h"
#include "uci/Uci.h"
#include "util/Hardened.h"
#include "util/Log.h"
#include "util/Shell.h"

#include <utility>

namespace
{

constexpr const char* restartCommand = "/etc/init.d/network restart";
constexpr const char* everyConfiguration = "";

// The steps of parsing return 1 to go on. Otherwise parsing ends with what the reader said: -1 is a failure, and 0,
// the document ended early, is a success on purpose.

using NodeStep = int (*)(const XmlReader& reader);

// Reads on, past every node that is not what `step` looks for.
int readUntil(XmlReader& reader, NodeStep step)
{
    for (;;) {
        if (const int result = reader.read(); result < 1) {
            return result;
        }
        if (const int result = step(reader); result != 0) {
            return result;
        }
    }
}

// Leaves the reader at the node behind the interfaces, whether there is a second one or not.
int configureSecondInterface(XmlReader& reader)
{
    if (const int result = reader.read(); result < 1) {
        return result;
    }
    const int result = configureInterface(reader);
    if (result == 1) {
        return reader.read();
    }
    return result == 0 ? 1 : -1;
}

int stageInterfaces(XmlReader& reader)
{
    if (const int result = readUntil(reader, isConfigurationStart); result < 1) {
        return result;
    }
    if (const int result = readUntil(reader, configureInterface); result < 1) {
        return result;
    }
    if (const int result = configureSecondInterface(reader); result < 1) {
        return result;
    }
    return isConfigurationEnd(reader) == 1 ? 0 : -1;
}

int readProto(const IpInterface& interface, std::string& proto)
{
    return Uci::Get(std::string(interface.uciSection) + ".proto", proto);
}

bool areBothDisabled(const std::string& first, const std::string& second)
{
    if (first != disabledMode.proto || second != disabledMode.proto) {
        return false;
    }
    logInfo("Disabling both network interfaces is forbidden");
    return true;
}

// Stages what the document asks for, and commits or reverts it.
int applyInterfaces(XmlReader& reader)
{
    const int staged = stageInterfaces(reader);

    // Both modes are read back in any case; staged values are seen.
    Uci::Changes(everyConfiguration);
    std::string first;
    std::string second;
    const int firstRead = readProto(ipInterfaces[0], first);
    const int secondRead = readProto(ipInterfaces[1], second);

    if (staged == -1 || firstRead == -1 || secondRead == -1 || areBothDisabled(first, second)) {
        // On purpose only the network: what was staged elsewhere is not this request's.
        Uci::Revert("network");
        return -1;
    }
    return Uci::Commit(everyConfiguration);
}

void restartNetwork()
{
    const int status = runShell(restartCommand);
    if (status == -1) {
        logErrno("system() failed");
    }
    if (exitCode(status) != 0) {
        logWarning("%s FAILED", restartCommand);
    }
}

} // namespace

int configureInterfaces(std::string payload)
{
    XmlReader reader(std::move(payload));
    if (!reader) {
        return -1;
    }
    if constexpr (hardened) {
        const StagingMarker marker;
        return applyInterfaces(reader);
    } else {
        return applyInterfaces(reader);
    }
}

int TarvelServiceUdp::setIpConfig(const Envelope& /*envelope*/)
{
    logInfo("Configuring network interfaces");
    // Parsed anew behind the envelope: this takes any document, also one in which other nodes come before the root.
    if (configureInterfaces(payload()) == -1) {
        logWarning("Configuring network interfaces failed");
        return refuse();
    }
    // On purpose before the restart, which may change the address that the requester knows.
    broadcastStatus(Status::success);
    restartNetwork();
    return 0;
}
