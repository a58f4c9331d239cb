# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# What each step does. Every function runs in the root of the tree, with "set -e", in a shell of its own.

jobs=$(nproc)

tracked() {
    git ls-files --cached --others --exclude-standard -- "$@" | while read -r name; do
        [ ! -f "$name" ] || echo "$name"
    done
}

check_formatting() {
    tracked '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
}

# Every tracked file that says it is a shell script.
check_shell_scripts() {
    local scripts
    mapfile -t scripts < <(tracked | xargs grep -lE -m1 '^#!.*\b(ba)?sh\b|^# shellcheck shell=')
    shellcheck --external-sources "${scripts[@]}"
}

test_tools() {
    /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/tools
}

build() {
    cmake --preset "$1"
    cmake --build --preset "$1" -j "$jobs"
}

unit_tests() {
    ctest --preset "$1" -j "$jobs" --no-tests=error
}

check_hardening() {
    local program programs=()
    for program in tarveld tarvelctl; do
        [ ! -x "build/release/$program" ] || programs+=("build/release/$program")
    done
    tools/check_hardening "${programs[@]}"
}

run_clang_tidy() {
    tools/run_clang_tidy build/asan
}

# The daemon of one build on simulated cards. A sanitizer's finding ends the daemon, and with it the test.
system_tests() {
    TARVELD=build/$1/tarveld sim/lan /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/system
}

# Prints the share of the lines of src/ that were reached, and names the others.
line_coverage() {
    local report=build/coverage/lines.txt enough=yes
    gcovr --root . --object-directory build/coverage --filter src/ --fail-under-line 95 --output "$report" \
        build/coverage || enough=no
    awk '/^TOTAL/ { print "note: " $NF " of " $2 " lines of src/ are reached by the unit tests" }
         /^src\// && $4 != "100%" { print "note: not reached: " $1 " " $5 }' "$report"
    [ "$enough" = yes ]
}
