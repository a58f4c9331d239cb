// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/GlobalOptions.h"
#include "client/cli/LocalFile.h"
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/TargetCommand.h"
#include "client/wire/Trace.h"

#include <cstring>
#include <fmt/core.h>
#include <limits>

namespace
{

template<typename T>
T requireNumber(int number, const char* option)
{
    if (number < 0 || number > std::numeric_limits<T>::max()) {
        throw usageFailure(fmt::format("{} is from 0 to {}", option, std::numeric_limits<T>::max()));
    }
    return static_cast<T>(number);
}

Bytes bytesOf(const std::string& text)
{
    Bytes bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

class RawCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "raw"; }

    void declareOwn(OptionSet& options) override
    {
        options.value("--command", &command, "N", "the command's number").required = true;
        options.value("--text", &text, "TEXT", "send this text as 8-bit section");
        options.value("--text-file", &textFile, "FILE", "send a file's text as 8-bit section; - is standard input");
        options.value("--payload", &payloadFile, "FILE", "send a file as it is behind the header");
        options.value("--format", &format, "N", "message format (1 with a text, else 0)").minimum = -1;
        options.value("--device", &device, "N", "device number (5)");
        options.value("--service", &service, "N", "service number (4)");
        options.value("--protocol-version", &version, "N", "protocol version (1)");
        options.flag("--udp", udp, "by broadcast instead of a connection: every card hears it");
    }

    void prepare(Context& /*context*/, const std::vector<Target>& targets) override
    {
        if ((text ? 1 : 0) + (textFile ? 1 : 0) + (payloadFile ? 1 : 0) > 1) {
            throw usageFailure("give only one of --text, --text-file and --payload");
        }
        if (udp && targets.size() > 1) {
            throw usageFailure("a broadcast goes to all cards at once: give one target");
        }
        prototype = makePrototype();
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        Request request = prototype;
        request.header.sequenceId = bareRequest(CommandId::versions).header.sequenceId; // one of its own for each card
        const std::string phase = "waiting for the answer";
        Reply reply;
        if (udp) {
            reply = co_await broadcastOnce(context, request, phase);
        } else {
            const Endpoint endpoint = co_await locate(context, target);
            reply = co_await context.network.askOnce(endpoint, request, phase);
        }
        show(reply, result);
        checkStatus(reply.header, phase);
    }

private:
    Request makePrototype() const
    {
        const auto number = static_cast<CommandId>(requireNumber<std::uint16_t>(command, "--command"));
        Request request = bareRequest(number);
        if (text || textFile) {
            request = textRequest(number, text ? *text : readLocalFile(*textFile));
        } else if (payloadFile) {
            request.payload = bytesOf(readLocalFile(*payloadFile));
        }
        if (format >= 0) {
            request.header.messageFormat = requireNumber<std::uint8_t>(format, "--format");
        }
        request.header.device = requireNumber<std::uint8_t>(device, "--device");
        request.header.service = requireNumber<std::uint8_t>(service, "--service");
        request.header.version = requireNumber<std::uint8_t>(version, "--protocol-version");
        request.changesCard = true; // who knows; in no case is it repeated
        return request;
    }

    // The first answer of any card, whatever its status.
    static Task<Reply> broadcastOnce(Context& context, Request request, std::string phase)
    {
        context.network.holdBack(request);
        const std::vector<BroadcastSocket> sockets = context.network.openInterfaces();
        context.network.broadcast(sockets, request);
        const TimePoint deadline = context.network.deadline();
        for (;;) {
            const std::optional<Datagram> datagram = co_await context.network.receive(sockets, deadline);
            if (!datagram) {
                throw Failure{ExitCode::noAnswer, "timeout", phase, "no card answered in time"};
            }
            std::optional<Reply> reply = replyIn(*datagram, request);
            if (reply) {
                co_return std::move(*reply);
            }
        }
    }

    static void show(const Reply& reply, Result& result)
    {
        result.add("status", std::int64_t{reply.header.status});
        result.add("format", std::int64_t{reply.header.messageFormat});
        result.add("length", static_cast<std::int64_t>(reply.payload.size()));
        try {
            result.add("text", reply.payload.empty() ? Cell() : Cell(textOf(reply, "")));
        } catch (const Failure&) {
            result.add("text", Cell());
        }
        result.add("bytes", hexText(reply.payload));
    }

    int command = 0;
    std::optional<std::string> text;
    std::optional<std::string> textFile;
    std::optional<std::string> payloadFile;
    int format = -1;
    int device = cardDevice;
    int service = cardService;
    int version = protocolVersion;
    bool udp = false;
    Request prototype;
};

} // namespace

std::unique_ptr<Command> makeRaw()
{
    return std::make_unique<RawCommand>();
}
