// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/MessageHeader.h"

#include <iostream>

void swapHeaderWords(MessageHeader& header)
{
    convertWords32(&header, headerSize / sizeof(std::uint32_t));
}

void dumpHeader(const MessageHeader& header)
{
    const auto number = [](std::uint8_t field) { return static_cast<unsigned int>(field); };
    std::cout << std::hex                                                                //
              << "Start pattern    (32bit): 0x" << header.startPattern << '\n'           //
              << "Version          ( 8bit): 0x" << number(header.version) << '\n'        //
              << "Message format   ( 8bit): 0x" << number(header.messageFormat) << '\n'  //
              << "Device           ( 8bit): 0x" << number(header.device) << '\n'         //
              << "Service          ( 8bit): 0x" << number(header.service) << '\n'        //
              << "Command ID       (16bit): 0x" << header.commandId << '\n'              //
              << "Status           ( 8bit): 0x" << number(header.status) << '\n'         //
              << "command version  ( 8bit): 0x" << number(header.commandVersion) << '\n' //
              << "Sequence ID      (32bit): 0x" << header.sequenceId << '\n'             //
              << std::dec                                                                //
              << "Payload length   (32bit): " << header.payloadLength << std::endl;
}
