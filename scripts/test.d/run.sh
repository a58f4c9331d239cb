# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# Runs the planned steps and counts what passed and what failed.

# shellcheck source=scripts/test.d/plan.sh
source "${BASH_SOURCE[0]%/*}/plan.sh"

passed=0
failed=0
skipped=0
outcome=
failed_steps=()
logs=build/test-logs
step_limit=3600 # seconds, many times what a step needs: one that hangs must not cost the report of all others

# Runs the planned steps, those of a stage at the same time.
run_steps() {
    local index
    trap 'kill "${running[@]}" 2>/dev/null; exit 130' INT TERM
    first_look
    for index in "${!names[@]}"; do
        if [ "$index" -eq 0 ] || [ "${stages[index]}" -ne "${stages[index - 1]}" ]; then
            start_stage "${stages[index]}"
        fi
        finish_step "$index"
    done
}

start_stage() {
    local index
    running=()
    for index in "${!names[@]}"; do
        [ "${stages[index]}" -eq "$1" ] || continue
        run_logged "${names[index]}" "${commands[index]}" &
        running[index]=$!
    done
}

# What the command prints goes to a log, of which the terminal sees the lines marked "note:" and, if the step fails, the end.
run_logged() {
    local started=$SECONDS log status command guard
    log=$(log_of "$1")
    set +e
    set -m # each job is a group of its own, which can be ended as a whole
    (
        set -e
        eval "$2"
    ) >"$log" 2>&1 </dev/null &
    command=$!
    end_what_hangs "$command" >>"$log" &
    guard=$!
    set +m
    disown "$guard"
    trap 'kill -- "-$command" "-$guard"' TERM
    wait "$command" 2>/dev/null # not the shell's own word of a job that was ended
    status=$?
    kill -- "-$guard"
    echo $((SECONDS - started)) >"$log.seconds"
    return $status
}

end_what_hangs() {
    sleep "$step_limit"
    echo "ended after $step_limit s, not being done"
    kill -TERM -- "-$1"
    sleep 30
    kill -KILL -- "-$1"
}

log_of() {
    echo "$logs/${1// /-}.log"
}

# Waits for the end of a step and reports it.
finish_step() {
    local index=$1 name=${names[$1]} status=0 log
    log=$(log_of "$name")
    printf '%2d/%d  %-34s' $((index + 1)) "${#names[@]}" "$name"
    wait "${running[index]}" || status=$?
    count "$name" "$status" "$log"
    report "$status" "$(<"$log.seconds")" "$log" "$(left_after "$index")"
}

# Adds the numbers of the test runners that wrote into a log, or one for a step that ran none.
count() {
    local name=$1 status=$2 log=$3 good bad left_out
    read -r good bad left_out < <(awk -f scripts/test.d/totals.awk "$log")
    if [ "$status" -ne 0 ]; then
        failed_steps+=("$name")
        [ "$bad" -gt 0 ] || bad=1
    elif [ "$good" -eq 0 ]; then
        good=1
    fi
    passed=$((passed + good))
    failed=$((failed + bad))
    skipped=$((skipped + left_out))
    outcome="$good passed"
}

report() {
    local status=$1 seconds=$2 log=$3 left=$4
    if [ "$status" -eq 0 ]; then
        printf 'ok      %4d s  %-12s %s\n' "$seconds" "$outcome" "$left"
        sed -n 's/^note:/   /p' "$log"
    else
        printf 'FAILED  %4d s  %s\n' "$seconds" "$log"
        tail -n 100 "$log" | sed 's/^/    /'
    fi
}

# Once more at the end, since of a long report perhaps only the end is kept.
failed_tests() {
    sed -nE -e 's/^(FAILED|ERROR) /    /p' -e '/\(Skipped\)$/d' \
        -e 's/^\t *[0-9]+ - (.*) \(.*\)$/    \1/p' "$1" | cut -c 1-200 | sed -n 1,20p
}

summary() {
    local name
    echo
    for name in "${failed_steps[@]}"; do
        echo "failed: $name"
        failed_tests "$(log_of "$name")"
    done
    echo "took $((SECONDS / 60)) min $((SECONDS % 60)) s"
    if [ "$skipped" -gt 0 ]; then
        echo "$passed passed, $failed failed, $skipped skipped"
    else
        echo "$passed passed, $failed failed"
    fi
    [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
}
