// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/decode/Dissection.h"
#include "client/messages/IpConfiguration.h"
#include "client/messages/TimeReference.h"
#include "client/messages/Versions.h"
#include "client/wire/Frame.h"

#include <cstring>
#include <span>

namespace
{

template<typename Read>
void survive(Read read)
{
    try {
        read();
    } catch (const Failure&) { // NOLINT(bugprone-empty-catch): what is no answer is refused, and that is all
    }
}

} // namespace

// A text that a card sends to the client, behind a header and a count that fit it, as the whole payload, and as a
// message to take apart.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    survive([&] { (void)parseVersions(text); });
    survive([&] { (void)parseIpConfiguration(text); });
    survive([&] { (void)parseTimeReference(text); });
    (void)dissect(std::as_bytes(std::span(data, size)));
    Reply reply;
    reply.header.messageFormat = section8Bit;
    reply.payload.resize(size);
    if (size > 0) {
        std::memcpy(reply.payload.data(), data, size);
    }
    survive([&] { (void)textOf(reply); });
    return 0;
}
