// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Command.h"
#include "client/cli/Context.h"
#include "client/cli/GlobalOptions.h"
#include "client/cli/LocalFile.h"
#include "client/commands/Commands.h"
#include "client/decode/Dissection.h"
#include "client/decode/HexInput.h"
#include "client/output/Console.h"
#include "client/output/Writer.h"

#include <algorithm>
#include <cstring>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <sstream>

namespace
{

bool isText(const Row& row)
{
    return row[1].value == Cell("text");
}

// A row for each line of the text; the first has the offset and the meaning.
std::vector<Row> rowsPerLine(Row row)
{
    std::vector<Row> rows;
    std::istringstream lines(std::get<std::string>(row[2].value));
    for (std::string line; std::getline(lines, line);) {
        // The lines of a versions report begin with one, which a table would have to show as \x09.
        std::replace(line.begin(), line.end(), '\t', ' ');
        row[2].value = line;
        rows.push_back(row);
        row[0].value = row[1].value = row[3].value = Cell();
    }
    return rows;
}

// A text of several lines takes as many lines of a table; other formats keep it whole.
void splitTexts(Result& result)
{
    std::vector<Row> rows;
    for (Row& row : result.list) {
        if (isText(row)) {
            const std::vector<Row> parts = rowsPerLine(std::move(row));
            rows.insert(rows.end(), parts.begin(), parts.end());
        } else {
            rows.push_back(std::move(row));
        }
    }
    result.list = std::move(rows);
}

class DecodeCommand final : public Command
{
public:
    void declare(OptionSet& options) override
    {
        options.value("--file", &file, "FILE", "read from a file; - is standard input");
        options.flag("--binary", binary, "the file holds the bytes themselves, not hexadecimal");
        options.argument("HEX", &words, "the message; standard input if neither HEX nor --file is given").required =
            false;
    }

    ExitCode run(Context& context) override
    {
        if (!words.empty() && (!file.empty() || binary)) {
            throw usageFailure("give either HEX or a file");
        }
        const Bytes bytes = words.empty() ? readFile() : readWords();
        std::vector<Result> results = dissectAll(bytes);
        context.writer.begin("decode", {{"offset"}, {"field"}, {"value"}, {"meaning"}});
        for (Result& result : results) {
            print(context, result);
        }
        const ExitCode code = commonCode(results);
        context.writer.end(code);
        return code;
    }

private:
    [[nodiscard]] Bytes readWords() const
    {
        try {
            return parseHex(fmt::format("{}", fmt::join(words, "\n")));
        } catch (const BadHex& bad) {
            throw usageFailure(bad.what());
        }
    }

    [[nodiscard]] Bytes readFile() const
    {
        const std::string text = readLocalFile(file.empty() ? "-" : file);
        if (binary) {
            Bytes bytes(text.size());
            std::memcpy(bytes.data(), text.data(), text.size());
            return bytes;
        }
        try {
            return parseHex(text);
        } catch (const BadHex& bad) {
            throw Failure{ExitCode::badFile, Category::badFile, "reading hexadecimal", bad.what()};
        }
    }

    // A connection carries message after message, so what follows the first is another. Nothing at all is taken for
    // one, too, so that somebody says that it is none.
    static std::vector<Result> dissectAll(std::span<const std::byte> bytes)
    {
        std::vector<Result> results;
        std::size_t offset = 0;
        do {
            Dissection dissection = dissect(bytes.subspan(offset), offset);
            offset += dissection.length;
            results.push_back(std::move(dissection.result));
        } while (offset < bytes.size());
        if (results.size() > 1) {
            for (std::size_t index = 0; index < results.size(); ++index) {
                results[index].target = fmt::format("message {}", index + 1);
            }
        }
        return results;
    }

    static void print(Context& context, Result& result)
    {
        if (context.options.output == "table") {
            splitTexts(result);
        }
        context.writer.add(result);
        if (!result.ok()) {
            context.console.error(result.target.empty() ? result.hint : result.target + ": " + result.hint);
        }
    }

    std::string file;
    bool binary = false;
    std::vector<std::string> words;
};

} // namespace

std::unique_ptr<Command> makeDecode()
{
    return std::make_unique<DecodeCommand>();
}
