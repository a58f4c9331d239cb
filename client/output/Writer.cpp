// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Writer.h"

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
