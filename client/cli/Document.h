// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/OptionSet.h"
#include "client/output/Writer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Where the text of a command goes that has a document of its own instead of a table: to the file of -o or --output,
// which is replaced as a whole, or to standard output. A word that is a format is one there, too, as it is behind the
// same option of the program.
struct DocumentOption {
    std::optional<std::string> file; // nothing: standard output

    void declare(OptionSet& options);
    // Behind the command line: hands over a format. Throws a usage Failure for a format besides a file.
    void settle(std::string& format);
    // Throws a badFile Failure.
    void deliver(std::string_view text) const;
};

// Collects the results, and delivers at the end what `render` makes of them; nothing after an interrupt, when nobody
// knows about the rest of the cards.
[[nodiscard]] std::unique_ptr<Writer>
makeDocumentWriter(const DocumentOption& place, std::function<std::string(const std::vector<Result>& results)> render);
