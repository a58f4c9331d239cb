// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/Commands.h"
#include "protocol/UdpService.h"

#include <array>
#include <string>
#include <string_view>

struct Envelope;

// The commands that arrive as datagrams. A request names its target by host name; one for another card is dropped.
// Every reply of this class is broadcast on the requester's port on purpose: it is heard even where no route leads
// back.
class TarvelServiceUdp final : public UdpService
{
public:
    // Reads the card's name, once. Without a name the process ends: there is no retry and no fallback.
    TarvelServiceUdp();
    ~TarvelServiceUdp() override = default;

    // Serves one datagram. Returns the handler's result, -1 on failure, or what the header check said if not 0.
    int processDatagram();

    // The commands. They return 0 when the request was carried out or is for another card, -1 after a failure
    // reply. The root's name is not matched to the command on purpose.
    int handleIpConfigSet();
    int handleIpConfigGet();
    int handleRebootCard();

    // Broadcasts a reply with status 2; returns 0, or -1 when it could not be sent.
    int sendFailureReply();

private:
    using Work = int (TarvelServiceUdp::*)(const Envelope& envelope);

    // The frame around each command: refuses a request with other sections (with the command's own `warning`) or
    // without a good envelope, drops one for another card, and leaves the rest, its reply included, to `work`.
    int handleCommand(const char* warning, Work work);

    int setIpConfig(const Envelope& envelope);
    int getIpConfig(const Envelope& envelope);
    int rebootCard(const Envelope& envelope);

    // The request's XML text as it came.
    [[nodiscard]] std::string payload() const { return std::string(datagram->text()); }

    int broadcast();
    int broadcastStatus(Status status);
    int broadcastText(std::string_view text);

    // Sends the failure reply and returns -1.
    int refuse();

    std::string hostName;
};

struct UdpCommand {
    CommandId id;
    int (TarvelServiceUdp::*handle)();
};

// The table of commands: who handles which.
inline constexpr auto udpCommands = std::to_array<UdpCommand>({
    {CommandId::ipConfigSet, &TarvelServiceUdp::handleIpConfigSet},
    {CommandId::reboot, &TarvelServiceUdp::handleRebootCard},
    {CommandId::ipConfigGet, &TarvelServiceUdp::handleIpConfigGet},
});
