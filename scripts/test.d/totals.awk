# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Adds up the summaries of the test runners in a log: ctest's "95% tests passed, 2 tests failed out of 40" and pytest's
# "1 failed, 11 passed, 3 skipped in 0.25s". Prints: passed failed skipped.

function number_before(word,    found) {
    if (!match($0, "[0-9]+ " word))
        return 0
    found = substr($0, RSTART, RLENGTH)
    return found + 0
}

/^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+/ {
    bad = number_before("tests? failed")
    failed += bad
    passed += $NF - bad
}

/^(=+ )?[0-9]+ [a-z]+.* in [0-9.]+s/ {
    passed += number_before("passed")
    failed += number_before("failed") + number_before("error")
    skipped += number_before("skipped")
}

END {
    print passed + 0, failed + 0, skipped + 0
}
