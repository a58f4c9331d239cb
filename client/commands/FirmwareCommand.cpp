// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/FirmwareCommand.h"

#include "client/card/Identity.h"
#include "client/card/Queries.h"
#include "client/card/Upload.h"
#include "client/cli/Context.h"
#include "client/commands/ConsoleObserver.h"
#include "client/wire/HexText.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

void FirmwareCommand::declareOwn(OptionSet& options)
{
    options.value("--patience", &patienceSeconds, "SECONDS",
                  "how long a card may take without a sign of progress, to unpack or to upgrade (120)");
    options.value("--max-size", &maxSize, "MIB", "refuse what unpacks to more than this (1024)").minimum = 1;
    options.argument("FILE", &path, "the archive: tar, compressed with gzip").required = true;
}

std::string FirmwareCommand::planTitle(std::size_t cards) const
{
    return fmt::format("{} of {} cards with {}, {} bytes, sha256 {}:", name(), cards, path, archive.size,
                       archive.sha256);
}

Task<std::string> FirmwareCommand::planOf(Context& context, Target target)
{
    const Endpoint endpoint = co_await locate(context.network, target);
    // What would be replaced is what people look at before they agree.
    const Versions versions = co_await queryVersions(context.network, endpoint);
    std::vector<std::string> now;
    for (const Component& component : versions.components) {
        now.push_back(fmt::format("{} {}", component.id, component.version));
    }
    co_return fmt::format("{}", fmt::join(now, ", "));
}

void FirmwareCommand::prepare(Context& context, const std::vector<Target>& /*targets*/)
{
    context.console.progress("", {"checking the archive"});
    try {
        // Looking through a large archive takes seconds in which the loop does not run: it is asked for a Ctrl-C.
        archive = requireGoodArchive(
            path, [&] { context.loop.takeInterrupt(); }, mebibyte * static_cast<std::uint64_t>(maxSize));
    } catch (const Interrupted&) {
        throw Failure{ExitCode::interrupted, Category::interrupted, "checking the archive",
                      "interrupted while the archive was checked; nothing was sent"};
    }
    context.console.forgetJob("");
    for (const std::string& warning : archive.warnings) {
        context.console.warning(fmt::format("{}: {}", path, warning));
    }
    context.console.note(fmt::format("{}: {} bytes, members: {}, sha256 {}", path, archive.size, archive.members.size(),
                                     archive.sha256));
}

Task<FirmwareCommand::Delivery> FirmwareCommand::sendArchive(Context& context, const Target& target, Endpoint endpoint,
                                                             CommandId command, Result& result)
{
    Delivery delivery;
    ConsoleObserver observer(context.console, target.label);
    Upload upload(context.network, observer, archive, command, patience());
    result.changed = std::nullopt; // until the card says so
    try {
        co_await upload.send(std::move(endpoint));
    } catch (const NotSent& held) {
        result.changed = false;
        result.add("frame", hexText(encode(held.request)));
        result.hint = "dry run: this header and the archive behind it were not sent";
        co_return delivery;
    } catch (const Failure& failure) {
        if (!upload.hasBegun()) {
            result.changed = false;
        }
        // Silence behind a whole archive is no failure yet: the card may have unpacked it, or be upgrading. Of an
        // upgrade the versions tell later; so the command decides.
        if (!upload.isWhole() || failure.code != ExitCode::noAnswer) {
            throw;
        }
        delivery.silence = failure;
    }
    delivery.sent = true;
    result.add("bytes", static_cast<std::int64_t>(archive.size));
    if (delivery.silence) {
        co_return delivery; // without a speed: when the card had it all, nobody said
    }
    result.add("seconds", upload.seconds());
    result.add("bytes_per_second", static_cast<std::int64_t>(upload.rate()));
    co_return delivery;
}
