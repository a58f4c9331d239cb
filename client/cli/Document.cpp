// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Document.h"

#include "client/cli/LocalFile.h"
#include "client/model/Failure.h"
#include "client/output/Streams.h"

#include <fmt/core.h>
#include <utility>

namespace
{

class DocumentWriter final : public Writer
{
public:
    using Render = std::function<std::string(const std::vector<Result>& results)>;

    DocumentWriter(const DocumentOption& newPlace, Render newRender) : place(newPlace), render(std::move(newRender)) {}

    void begin(std::string_view /*command*/, std::vector<Column> /*columns*/) override {}
    void add(const Result& result) override { results.push_back(result); }
    void end(ExitCode code) override
    {
        if (code != ExitCode::interrupted) {
            place.deliver(render(results));
        }
    }
    [[nodiscard]] bool streams() const override { return false; }

private:
    const DocumentOption& place;
    Render render;
    std::vector<Result> results;
};

} // namespace

void DocumentOption::declare(OptionSet& options)
{
    options
        .value("-o,--output", &file, "FILE",
               "write to this file, which is replaced as a whole; or print a format: json, jsonl, csv")
        .mayBeEmpty = false;
}

void DocumentOption::settle(std::string& format)
{
    if (!file) {
        return;
    }
    if (isFormat(*file)) {
        format = *std::exchange(file, std::nullopt);
    } else if (format != defaultFormat) {
        throw usageFailure(fmt::format("--output is told a file and the format {}, but a file has a form of its own: "
                                       "leave one of them out",
                                       format));
    }
}

void DocumentOption::deliver(std::string_view text) const
{
    if (!file || *file == "-") {
        writeData(text);
    } else {
        replaceLocalFile(*file, text);
    }
}

std::unique_ptr<Writer> makeDocumentWriter(const DocumentOption& place,
                                           std::function<std::string(const std::vector<Result>& results)> render)
{
    return std::make_unique<DocumentWriter>(place, std::move(render));
}
