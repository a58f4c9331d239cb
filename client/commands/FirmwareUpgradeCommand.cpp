// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Context.h"
#include "client/commands/Commands.h"
#include "client/commands/Exchanges.h"
#include "client/commands/FirmwareCommand.h"
#include "client/output/Console.h"
#include "client/plan/VersionsDiff.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

constexpr const char* upgrading = "waiting for the end of the upgrade";
constexpr Seconds pause{0.5}; // between two attempts to reach a card that may be restarting

Failure unchanged()
{
    return {ExitCode::verification, "unchanged", "comparing the versions",
            "the card took the archive, but its versions are what they were: the upgrade script failed, or these "
            "versions were installed already; the card's log tells which"};
}

Failure unknown(const Failure& cause)
{
    return {cause.code, cause.category, upgrading,
            fmt::format("the card took the archive, but it is not known whether it upgraded: {}", cause.hint)};
}

Failure stillUpgrading()
{
    return {ExitCode::interrupted, "interrupted", upgrading, "the card goes on with the upgrade all the same"};
}

class FirmwareUpgradeCommand final : public FirmwareCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "firmware upgrade"; }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint endpoint = co_await locate(context, target);
        const Versions before = co_await getVersions(context, endpoint);
        const bool sent = co_await sendArchive(context, target, endpoint, CommandId::firmwareUpgrade, result);
        if (!sent) {
            result.add("verdict", std::string("not sent"));
            co_return;
        }
        result.add("verdict", std::string("unknown")); // until the versions tell
        const TimePoint start = Clock::now();
        const Versions afterwards = co_await versionsAfterwards(context, target, endpoint);
        result.add("upgrade_seconds", Seconds(Clock::now() - start).count());
        judge(before, afterwards, result);
    }

private:
    // The card says success before it upgrades and serves nobody while it does: the next answer is the script's end.
    Task<Versions> versionsAfterwards(Context& context, const Target& target, Endpoint endpoint) const
    {
        const TimePoint end = after(patience());
        bool interrupted = false;
        Failure last;
        while (!interrupted) {
            try {
                Versions versions = co_await askVersions(context, target, endpoint, end);
                co_return versions;
            } catch (const Failure& failure) {
                last = failure;
            } catch (const Interrupted&) {
                interrupted = true;
            }
            if (last.code == ExitCode::protocol || Clock::now() >= end) {
                throw unknown(last);
            }
            if (!interrupted) {
                co_await context.loop.until(std::min(end, after(pause)));
            }
        }
        throw stillUpgrading();
    }

    static Task<Versions> askVersions(Context& context, const Target& target, Endpoint endpoint, TimePoint end)
    {
        context.console.progress(fmt::format("{}: upgrading", target.label));
        const Request request = bareRequest(CommandId::versions);
        TcpConnection connection = co_await TcpConnection::open(context.loop, context.console, endpoint, end);
        co_await connection.sendAll(encode(request), end, upgrading);
        const Reply reply = co_await connection.receiveReply(request, end, upgrading);
        context.console.progress("");
        checkStatus(reply.header, upgrading);
        co_return parseVersions(textOf(reply, upgrading), upgrading);
    }

    static void judge(const Versions& before, const Versions& afterwards, Result& result)
    {
        result.malformed = before.malformed || afterwards.malformed;
        result.listName = "changes";
        for (const std::string& id : differingComponents({before.components, afterwards.components})) {
            const std::optional<std::string> old = versionOf(before.components, id);
            const std::optional<std::string> now = versionOf(afterwards.components, id);
            result.list.push_back(
                {{"component", id}, {"before", old ? Cell(*old) : Cell()}, {"after", now ? Cell(*now) : Cell()}});
        }
        const bool upgraded = !result.list.empty();
        setVerdict(result, upgraded ? "upgraded" : "unchanged");
        if (!upgraded) {
            throw unchanged();
        }
    }

    static void setVerdict(Result& result, const std::string& verdict)
    {
        const auto field = std::find_if(result.fields.begin(), result.fields.end(),
                                        [](const Field& one) { return one.name == "verdict"; });
        field->value = verdict;
    }
};

} // namespace

std::unique_ptr<Command> makeFirmwareUpgrade()
{
    return std::make_unique<FirmwareUpgradeCommand>();
}
