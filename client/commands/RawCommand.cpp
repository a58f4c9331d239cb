// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/cli/Context.h"
#include "client/cli/LocalFile.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"
#include "client/wire/HexText.h"

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
    [[nodiscard]] std::vector<Column> columns() const override
    {
        return {{"status"}, {"format"}, {"length"}, {"text"}, {"payload"}};
    }

    [[nodiscard]] bool takesNetworks() const override { return false; } // its command may be one that changes cards

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
        // Once for all targets: standard input can be read only once.
        prototype = makePrototype();
    }

    [[nodiscard]] bool looksUpNames() const override { return !udp; }
    [[nodiscard]] bool tellsWhereFrom() const override { return !udp; }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        Request request = prototype;
        request.header.sequenceId = bareRequest(CommandId::versions).header.sequenceId; // one of its own for each card
        if (!changesNothing(request)) {
            result.changed = std::nullopt; // nobody knows what every command does
        }
        const Reply reply = co_await sendOrNot(context, target, std::move(request), result);
        // Before its status is judged: a refusal is what somebody may want to see.
        show(reply, result);
        checkStatus(reply.header);
    }

private:
    Task<Reply> sendOrNot(Context& context, const Target& target, Request request, Result& result) const
    {
        try {
            Reply reply = co_await send(context, target, std::move(request));
            co_return reply;
        } catch (const Failure& failure) {
            if (wasNotSent(failure)) {
                result.changed = false;
            }
            throw;
        }
    }

    Task<Reply> send(Context& context, const Target& target, Request request) const
    {
        context.network.admit(request);
        if (udp) {
            Reply reply = co_await context.network.askAnybody(std::move(request));
            co_return reply;
        }
        const Endpoint endpoint = co_await locate(context.network, target);
        // Once, also what only reads: who tries a card wants to see what one request does.
        Reply reply = co_await context.network.askOnce(endpoint, std::move(request));
        co_return reply;
    }

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
        return request;
    }

    static void show(const Reply& reply, Result& result)
    {
        result.add("status", std::int64_t{reply.header.status});
        result.add("format", std::int64_t{reply.header.messageFormat});
        result.add("length", static_cast<std::int64_t>(reply.payload.size()));
        try {
            result.add("text", reply.payload.empty() ? Cell() : Cell(textOf(reply)));
        } catch (const Failure&) {
            result.add("text", Cell());
        }
        result.add("payload", hexText(reply.payload));
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
