// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/decode/Meanings.h"

#include "client/wire/Frame.h"

#include <fmt/core.h>
#include <fmt/ranges.h>
#include <vector>

namespace
{

std::string nameOfStatus(Status status)
{
    switch (status) {
    case Status::success:
        return "success";
    case Status::failure:
        return "the command failed";
    case Status::wrongVersion:
        return "wrong version";
    case Status::wrongDevice:
        return "wrong device";
    case Status::wrongService:
        return "wrong service";
    case Status::unknownCommand:
        return "unknown command";
    }
    return "unknown status";
}

} // namespace

std::string meaningOfCommand(std::uint16_t commandId)
{
    const bool reply = (commandId & replyFlag) != 0;
    const std::string_view name = nameOf(static_cast<CommandId>(commandId & ~replyFlag));
    return fmt::format("{}, {}", name, reply ? "reply" : "request");
}

std::string meaningOfStatus(const MessageHeader& header)
{
    const bool reply = (header.commandId & replyFlag) != 0;
    // Whatever a request says there, no card looks at it.
    return reply ? nameOfStatus(static_cast<Status>(header.status)) : "not looked at in a request";
}

std::string meaningOfFormat(std::uint8_t messageFormat)
{
    std::vector<std::string_view> parts;
    const auto note = [&](std::uint8_t bits, std::string_view name) {
        if ((messageFormat & bits) != 0) {
            parts.push_back(name);
        }
    };
    note(section64Bit, "64-bit section");
    note(section32Bit, "32-bit section");
    note(section16Bit, "16-bit section");
    note(section8Bit, "8-bit section");
    note(rawSectionsFlag, "sections as received");
    note(static_cast<std::uint8_t>(~(section64Bit | section32Bit | section16Bit | section8Bit | rawSectionsFlag)),
         "unused bits");
    return parts.empty() ? "no section" : fmt::format("{}", fmt::join(parts, ", "));
}

std::string expectedValue(std::uint32_t value, std::uint32_t expected)
{
    return value == expected ? "" : fmt::format("should be {}", expected);
}
