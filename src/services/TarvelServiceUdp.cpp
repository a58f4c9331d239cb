// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceUdp.h"

#include "protocol/TextSection.h"
#include "services/Envelope.h"
#include "util/LibUtils.h"
#include "util/Log.h"

TarvelServiceUdp::TarvelServiceUdp()
{
    if (LibUtils::getHostName(hostName) == -1) {
        throw; // On purpose with no exception in flight: this ends the process.
    }
}

int TarvelServiceUdp::processDatagram()
{
    if (const int result = receiveDatagram(); result != 0) {
        return result;
    }
    const MessageHeader& header = datagram->header();
    if (const int result = checkHeader(header); result != 0) {
        return result;
    }
    for (const UdpCommand& command : udpCommands) {
        if (command.id == static_cast<CommandId>(header.commandId)) {
            return (this->*command.handle)();
        }
    }
    return handleUnknownCommand(header);
}

int TarvelServiceUdp::handleIpConfigSet()
{
    return handleCommand("IPConfigSet message should only contain a 8-bit section!", &TarvelServiceUdp::setIpConfig);
}

int TarvelServiceUdp::handleIpConfigGet()
{
    return handleCommand("IPConfigGet message should only contain a 8-bit section!", &TarvelServiceUdp::getIpConfig);
}

int TarvelServiceUdp::handleRebootCard()
{
    return handleCommand("RebootCard message should only contain a 8-bit section!", &TarvelServiceUdp::rebootCard);
}

int TarvelServiceUdp::handleCommand(const char* warning, Work work)
{
    if (!hasOnlyTextSection(datagram->header(), warning)) {
        return refuse();
    }
    Envelope envelope;
    if (parseEnvelope(payload(), envelope.from, envelope.to) == -1) {
        return refuse();
    }
    if (envelope.to != hostName) {
        logInfo("Message is for \"%s\" not for me \"%s\", drop it", envelope.to.c_str(), hostName.c_str());
        return 0;
    }
    return (this->*work)(envelope);
}

int TarvelServiceUdp::sendFailureReply()
{
    return broadcastStatus(Status::failure);
}

int TarvelServiceUdp::refuse()
{
    sendFailureReply();
    return -1;
}

int TarvelServiceUdp::broadcast()
{
    return sendDatagram(htonl(INADDR_BROADCAST), senderPort());
}

int TarvelServiceUdp::broadcastStatus(Status status)
{
    buildStatusReply(datagram->header(), datagram->header(), status);
    return broadcast();
}

int TarvelServiceUdp::broadcastText(std::string_view text)
{
    if (!datagram->setText(text)) {
        logWarning("Reply of %zu characters does not fit into a datagram", text.size());
        return refuse();
    }
    buildTextReply(datagram->header(), datagram->header(), textSectionSize(text.size()));
    return broadcast();
}
