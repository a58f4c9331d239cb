// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Context.h"
#include "client/cli/LocalFile.h"
#include "client/commands/Commands.h"
#include "client/engine/EventLoop.h"
#include "client/firmware/Archive.h"
#include "client/firmware/Signature.h"
#include "client/output/Console.h"
#include "client/output/Report.h"
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
            {"link_target", member.target.empty() ? Cell() : Cell(member.target)}};
}

class FirmwareCheckCommand final : public Command
{
public:
    void declare(OptionSet& options) override
    {
        options.value("--max-size", &maxSize, "MIB", "refuse what unpacks to more than this (1024)").minimum = 1;
        options.value("--key", &keyPath, "FILE", "require that this public key has signed it, as a hardened card does");
        options.argument("FILE", &path, "the archive: tar, compressed with gzip").required = true;
    }

    ExitCode run(Context& context) override
    {
        const Archive archive = inspect(context);
        Result result;
        result.target = archive.path;
        result.add("bytes", static_cast<std::int64_t>(archive.size));
        result.add("sha256", archive.sha256);
        result.add("unpacked_bytes", static_cast<std::int64_t>(archive.unpacked));
        // An empty file is no archive, so that there is something to divide by.
        result.add("ratio", static_cast<double>(archive.unpacked) / static_cast<double>(archive.size));
        std::vector<Column> columns = {{"bytes"}, {"sha256"}, {"unpacked_bytes"}, {"ratio"}};
        if (keyPath) {
            result.add("signed_by", archive.problems.empty() ? Cell(*keyPath) : Cell());
            columns.emplace_back(Column{"signed_by"});
        }
        columns.insert(columns.end(), {{"path"}, {"kind"}, {"size"}, {"link_target"}});
        result.listName = "members";
        // Rows are made while they are printed: of very many members they would take more memory than the members.
        result.longList = [&archive](const RowVisitor& visit) {
            archive.members.forEach([&](const ArchiveMember& member) { visit(rowOf(member)); });
        };
        if (!archive.problems.empty()) {
            result.fail({ExitCode::badFile, Category::badArchive, "checking the archive",
                         fmt::format("must not go to a card: {}", fmt::join(archive.problems, "; "))});
        }
        // Not earlier: a file that cannot be looked through is the failure of the whole run, and no result of it.
        context.writer.begin("firmware check", columns);
        context.writer.add(result);
        context.writer.end(result.code);
        tell(context, archive, result);
        return result.code;
    }

private:
    // What is refused anyway is not asked for its signature.
    Archive inspect(const Context& context) const
    {
        const Checkpoint checkpoint = [&] { context.loop.takeInterrupt(); };
        const std::uint64_t most = mebibyte * static_cast<std::uint64_t>(maxSize);
        if (!keyPath) {
            return inspectArchive(path, checkpoint, most);
        }
        const SignatureKey key(*keyPath, readLocalFile(*keyPath));
        Contents contents = contentsForSignature();
        Archive archive = inspectArchive(path, checkpoint, most, &contents);
        if (archive.problems.empty()) {
            archive.problems = key.problemsWith(contents);
            checkpoint(); // a Ctrl-C also ends the program that looks at the signature
        }
        return archive;
    }

    // The result has them in one hint; people read one a line.
    void tell(const Context& context, const Archive& archive, const Result& result) const
    {
        for (const std::string& warning : archive.warnings) {
            context.console.warning(fmt::format("{}: {}", archive.path, warning));
        }
        if (!archive.problems.empty()) {
            Report(context.console).tellAll(result, archive.problems);
        } else {
            context.console.note(fmt::format("{}: nothing in it that a card must not get", archive.path));
            if (keyPath) {
                context.console.note(fmt::format("{}: signed by {}", archive.path, *keyPath));
            }
        }
    }

    std::string path;
    std::optional<std::string> keyPath;
    int maxSize = 1024;
};

} // namespace

std::unique_ptr<Command> makeFirmwareCheck()
{
    return std::make_unique<FirmwareCheckCommand>();
}
