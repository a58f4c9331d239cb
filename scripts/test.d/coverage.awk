# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# awk -v folder=FOLDER -v enough=PERCENT: of lines as lcov writes them down, prints the share of the folder's that were
# reached, and the others. Ends with 1 if that is not enough, or if there are none.

BEGIN { FS = "[:,]" }

function tell_missed() {
    if (missed != "")
        print "note: not reached: " file missed
    missed = ""
    last = 0
}

$1 == "SF" {
    tell_missed()
    file = $2
    is_counted = index(file, folder "/") == 1
}

$1 == "DA" && is_counted {
    lines++
    if ($3 > 0)
        reached++
    else if (last > 0 && last == $2 - 1)
        sub(/(-[0-9]+)?$/, "-" $2, missed)
    else
        missed = missed " " $2
    last = $3 > 0 ? 0 : $2
}

END {
    tell_missed()
    share = lines ? 100 * reached / lines : 0
    printf "note: %.1f%% of %d lines of %s/ are reached by the unit tests\n", share, lines, folder
    exit !(lines && share >= enough)
}
