// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/FirmwareCommand.h"

#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/firmware/Upload.h"
#include "client/output/Console.h"
#include "client/wire/Trace.h"

#include <fmt/core.h>

void FirmwareCommand::declareOwn(OptionSet& options)
{
    options.value("--patience", &patienceSeconds, "SECONDS",
                  "how long a card may take without a sign of progress, to unpack or to upgrade (120)");
    options.argument("FILE", &path, "the archive: tar, compressed with gzip").required = true;
}

void FirmwareCommand::prepare(Context& context, const std::vector<Target>& /*targets*/)
{
    archive = requireGoodArchive(path);
    context.console.note(fmt::format("{}: {} bytes, members: {}, sha256 {}", path, archive.size, archive.members.size(),
                                     archive.sha256));
}

Task<bool> FirmwareCommand::sendArchive(Context& context, const Target& target, Endpoint endpoint, CommandId command,
                                        Result& result)
{
    Upload upload(context, target.label, archive, command, patience());
    if (context.options.dryRun) {
        result.add("bytes", hexText(upload.head()));
        result.hint = "dry run: this header and the archive behind it were not sent";
        co_return false;
    }
    co_await upload.send(std::move(endpoint));
    result.add("bytes", static_cast<std::int64_t>(archive.size));
    result.add("seconds", upload.seconds());
    result.add("bytes_per_second", static_cast<std::int64_t>(upload.rate()));
    co_return true;
}
