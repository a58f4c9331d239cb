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
    echo "${#scripts[@]} scripts are clean"
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
    tools/run_clang_tidy build/clang
}

# The daemon of one build on simulated cards. A sanitizer's finding ends the daemon, and with it the test.
system_tests() {
    TARVELD=build/$1/tarveld sim/lan /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/system
}

line_coverage() {
    gcovr --root . --object-directory build/coverage --filter src/ --fail-under-line 95 build/coverage
}
