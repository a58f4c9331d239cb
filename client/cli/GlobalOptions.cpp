// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/GlobalOptions.h"

#include "client/output/Writer.h"

void GlobalOptions::declare(OptionSet& options)
{
    options.value("-o,--output", &output, "FORMAT", "how data is printed: table (if not told), json, jsonl, csv")
        .choices = formats();
    options.value("--columns", &columns, "NAMES", "these columns of a table or of CSV: target,ok,code");
    options.value("--timeout", &timeout, "SECONDS", "time for one step: to connect, to be answered (5)").minimum = 0.01;
    options.value("--retries", &retries, "N", "how often a request that changes nothing is repeated (2)");
    options.value("--parallel", &parallel, "N", "how many targets are served at the same time (64)").minimum = 1;
    options.value("-i,--interface", &interfaces, "IF", "broadcast only on this interface (repeatable)").mayBeEmpty =
        false;
    options.value("--exclude", &exclude, "TARGET", "all targets but these: names, addresses, ranges (repeatable)");
    options.value("--groups", &groupsFile, "FILE", "file with card names and @groups");
    options.flag("--fold", fold, "print identical answers, and failures, once");
    options.flag("-q,--quiet", quiet, "no notes and no progress: data, warnings and failures only");
    options.flag("-v,--verbose", verbose, "show the frames sent and received, in hexadecimal");
    options.flag("--dry-run", dryRun, "print what would be sent that changes a card; change nothing");
    options.flag("-y,--yes", yes, "go on where the effect cannot be undone, and ask nothing");
    options.flag(
        "--force", force,
        "go on where another card could be meant (but no stale groups line), an address may be taken, or a card "
        "to rescue works");
    options.flag("--trust-groups", trustGroups, "change a card at its address in the groups file, unheard");
    options.flag("--no-probe", noProbe,
                 "do not ask, before a change, whether two cards share an address, or a card has it");
    options.flag("--unsafe-raw", unsafeRaw, "send values that the card's shell would interpret");
}
