# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# Runs the steps and counts what passed and what failed.

passed=0
failed=0
skipped=0
outcome=
failed_steps=()
side_names=()
side_jobs=()
logs=build/test-logs

# step PART NAME COMMAND...: runs the command if its part was asked for. What it prints goes to a log, of which the
# terminal sees the lines marked "note:" and, if the step fails, the end.
step() {
    side_step "$@"
    join_steps
}

# The same beside the steps that follow, until join_steps. For steps that mostly wait.
side_step() {
    wants "$1" || return 0
    side_names+=("$2")
    run_logged "$2" "${@:3}" &
    side_jobs+=($!)
}

run_logged() {
    local started=$SECONDS log status
    log=$(log_of "$1")
    set +e
    (
        set -e
        "${@:2}"
    ) >"$log" 2>&1 </dev/null
    status=$?
    echo $((SECONDS - started)) >"$log.seconds"
    return $status
}

log_of() {
    echo "$logs/${1// /-}.log"
}

# Waits for the steps that have been started and reports them in their order.
join_steps() {
    local index name status log
    for index in "${!side_names[@]}"; do
        name=${side_names[index]} status=0
        log=$(log_of "$name")
        printf '%-34s' "$name"
        wait "${side_jobs[index]}" || status=$?
        count "$name" "$status" "$log"
        report "$status" "$(<"$log.seconds")" "$log"
    done
    side_names=() side_jobs=()
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
    local status=$1 seconds=$2 log=$3
    if [ "$status" -eq 0 ]; then
        printf 'ok      %4d s  %s\n' "$seconds" "$outcome"
        sed -n 's/^note:/   /p' "$log"
    else
        printf 'FAILED  %4d s  %s\n' "$seconds" "$log"
        tail -n 100 "$log" | sed 's/^/    /'
    fi
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
