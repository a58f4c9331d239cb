# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# What will be run, and how long that takes, going by the last run.

names=()
commands=()
stages=()
last=() # seconds of the last run, kept beside the logs
stage=0

# step PART NAME COMMAND...: the command is run if its part was asked for.
step() {
    side_step "$@"
    join_steps
}

# The same beside the steps that follow, until join_steps. For steps that mostly wait.
side_step() {
    wants "$1" || return 0
    names+=("$2")
    commands+=("$(printf '%q ' "${@:3}")")
    stages+=("$stage")
}

join_steps() {
    stage=$((stage + 1))
}

# Must come before the first step, which writes over what the last run left.
first_look() {
    local index seconds
    for index in "${!names[@]}"; do
        seconds=$(log_of "${names[index]}").seconds
        [ ! -s "$seconds" ] || last[index]=$(<"$seconds")
    done
    echo "${#names[@]} steps$(left_from 0 ", ")"
}

left_after() {
    left_from $((stages[$1] + 1))
}

# left_from STAGE [BEFORE]: what is left when STAGE begins, in words, and nothing if no step is or none was ever timed.
left_from() {
    local index seconds=0 unknown=0 longest=()
    for index in "${!names[@]}"; do
        [ "${stages[index]}" -ge "$1" ] || continue
        if [ -z "${last[index]:-}" ]; then
            unknown=$((unknown + 1))
        elif [ "${last[index]}" -gt "${longest[stages[index]]:-0}" ]; then
            longest[stages[index]]=${last[index]}
        fi
    done
    [ ${#longest[@]} -gt 0 ] || return 0
    for index in "${!longest[@]}"; do
        seconds=$((seconds + longest[index]))
    done
    printf '%s' "${2:-}" "$(in_words "$seconds")" " left"
    [ "$unknown" -eq 0 ] || printf ', and %d not timed yet' "$unknown"
}

in_words() {
    if [ "$1" -lt 90 ]; then
        echo "$1 s"
    else
        echo "$((($1 + 30) / 60)) min"
    fi
}
