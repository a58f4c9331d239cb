// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Writer.h"

std::unique_ptr<Writer> makeWriter(std::string_view format)
{
    if (format == "json") {
        return makeJsonWriter();
    }
    if (format == "jsonl") {
        return makeJsonLinesWriter();
    }
    return format == "csv" ? makeCsvWriter() : makeTableWriter();
}
