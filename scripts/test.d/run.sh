# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# Runs one step after the other and counts what passed and what failed.

passed=0
failed=0
skipped=0
failed_steps=()
logs=build/test-logs

# step PART NAME COMMAND...: runs the command if its part was asked for. A step of one test runner counts each of its
# tests, any other step counts as one test. What it prints goes to a log, and to the terminal if it fails.
step() {
    local part=$1 name=$2
    shift 2
    wants "$part" || return 0
    local log=$logs/${name// /-}.log status started=$SECONDS
    printf '%-46s' "$name"
    set +e
    (
        set -e
        "$@"
    ) >"$log" 2>&1 </dev/null
    status=$?
    set -e
    count "$name" "$status" "$log"
    if [ "$status" -eq 0 ]; then
        printf 'ok      %4d s  %s\n' $((SECONDS - started)) "$(tail_of_interest "$log")"
    else
        printf 'FAILED  %4d s  %s\n' $((SECONDS - started)) "$log"
        sed 's/^/    /' "$log" | tail -n 100
    fi
}

# Adds the numbers of the test runner in a log, ctest's or pytest's, or one for the step itself.
count() {
    local name=$1 status=$2 log=$3 good=0 bad=0 total line
    if line=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1) && [ -n "$line" ]; then
        total=${line##* }
        bad=$(sed -E 's/.*passed, ([0-9]+) .*/\1/' <<<"$line")
        good=$((total - bad))
    elif line=$(grep -E '^(=+ )?[0-9]+ (passed|failed|skipped).* in [0-9.]+s' "$log" | tail -n 1) && [ -n "$line" ]; then
        good=$(number_of passed "$line")
        bad=$(($(number_of failed "$line") + $(number_of errors? "$line")))
        skipped=$((skipped + $(number_of skipped "$line")))
    elif [ "$status" -eq 0 ]; then
        good=1
    fi
    if [ "$status" -ne 0 ]; then
        failed_steps+=("$name")
        [ "$bad" -gt 0 ] || bad=1
    fi
    passed=$((passed + good))
    failed=$((failed + bad))
}

number_of() {
    sed -nE "s/.*[^0-9]([0-9]+) $1.*/\1/p" <<<" $2" | grep . || echo 0
}

# The line of a log that says most: a test runner's summary, or the step's own last line.
tail_of_interest() {
    grep -E 'tests passed|[0-9]+ passed|^lines:' "$1" | tail -n 1 || tail -n 1 "$1"
}

summary() {
    local name
    echo
    for name in "${failed_steps[@]}"; do
        echo "failed: $name"
    done
    echo "took $((SECONDS / 60)) min $((SECONDS % 60)) s"
    if [ "$skipped" -gt 0 ]; then
        echo "$passed passed, $failed failed, $skipped skipped"
    else
        echo "$passed passed, $failed failed"
    fi
    [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
}
