# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What is counted: the codec, the parsing of each document, and each whole handler."""

FUNCTIONS = {
    "header conversion": "swapHeaderWords",
    "sections of a datagram, decoding": "decodeDatagramSections",
    "sections of a message, encoding": "swapSections",
    "envelope, parsing": "parseEnvelope",
    "IP configuration, parsing and staging": "configureInterfaces",
    "time reference, parsing and setting": "parseTimeReferenceConfiguration",
    "unknown command, TCP": "TcpService::handleUnknownCommand",
    "versions": "TarvelServiceTcp::processVersions",
    "time reference get": "TarvelServiceTcp::processTimeReferenceGet",
    "time reference set": "TarvelServiceTcp::processTimeReferenceSet",
    "upload of 100 kB": "TarvelServiceTcp::processFwUpload",
    "unknown command, UDP": "UdpService::handleUnknownCommand",
    "IP configuration get": "TarvelServiceUdp::getIpConfig",
    "IP configuration set": "TarvelServiceUdp::setIpConfig",
    "reboot": "TarvelServiceUdp::rebootCard",
    "message, all of it": "TarvelServiceTcp::dispatch",
    "datagram, all of it": "TarvelServiceUdp::processDatagram",
}
