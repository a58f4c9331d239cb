// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Context.h"
#include "client/commands/Commands.h"
#include "client/firmware/Archive.h"
#include "client/output/Console.h"
#include "client/output/Writer.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

Row rowOf(const ArchiveMember& member)
{
    return {{"path", member.path},
            {"kind", std::string(kindName(member.kind))},
            {"size", member.size},
            {"target", member.target.empty() ? Cell() : Cell(member.target)}};
}

class FirmwareCheckCommand final : public Command
{
public:
    void declare(OptionSet& options) override
    {
        options.argument("FILE", &path, "the archive: tar, compressed with gzip").required = true;
    }

    ExitCode run(Context& context) override
    {
        const Archive archive = inspectArchive(path);
        Result result;
        result.target = archive.path;
        result.add("bytes", static_cast<std::int64_t>(archive.size));
        result.add("sha256", archive.sha256);
        result.listName = "members";
        for (const ArchiveMember& member : archive.members) {
            result.list.push_back(rowOf(member));
        }
        if (!archive.problems.empty()) {
            result.fail({ExitCode::badFile, "bad-archive", "checking the archive",
                         fmt::format("must not go to a card: {}", fmt::join(archive.problems, "; "))});
        }
        context.writer.begin("firmware check");
        context.writer.add(result);
        context.writer.end(result.code);
        tell(context, archive);
        return result.code;
    }

private:
    static void tell(const Context& context, const Archive& archive)
    {
        for (const std::string& problem : archive.problems) {
            context.console.error(fmt::format("{}: {}", archive.path, problem));
        }
        if (archive.problems.empty()) {
            context.console.note(fmt::format("{}: nothing in it that a card must not get", archive.path));
        }
    }

    std::string path;
};

} // namespace

std::unique_ptr<Command> makeFirmwareCheck()
{
    return std::make_unique<FirmwareCheckCommand>();
}
