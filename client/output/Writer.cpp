// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Writer.h"

#include "client/model/Contains.h"

const std::vector<std::string>& formats()
{
    static const std::vector<std::string> words = {std::string(defaultFormat), "json", "jsonl", "csv"};
    return words;
}

bool isFormat(const std::string& word)
{
    return contains(formats(), word);
}

std::unique_ptr<Writer> makeWriter(std::string_view format, std::vector<std::string> columns)
{
    if (format.starts_with("json") && !columns.empty()) {
        throw usageFailure("JSON has no columns to choose from; a table and CSV have");
    }
    if (format == "json") {
        return makeJsonWriter();
    }
    if (format == "jsonl") {
        return makeJsonLinesWriter();
    }
    return format == "csv" ? makeCsvWriter(std::move(columns)) : makeTableWriter(std::move(columns));
}
