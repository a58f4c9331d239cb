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
    tracked '*.h' '*.c' '*.cpp' | xargs clang-format --dry-run --Werror
}

# Every tracked file that says it is a shell script.
check_shell_scripts() {
    local scripts
    # A makefile may hold a script in the middle.
    mapfile -t scripts < <(tracked | grep -v Makefile | xargs grep -lE -m1 '^#!.*\b(ba)?sh\b|^# shellcheck shell=')
    shellcheck --external-sources "${scripts[@]}"
}

test_tools() {
    /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/tools
}

build() {
    cmake --preset "$1"
    cmake --build --preset "$1" -j "$jobs"
}

# Nearly all of their time is the client's, which waits for cards.
unit_tests() {
    ctest --preset "$1" -j "$((4 * jobs))" --no-tests=error
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

# Runs on a simulated LAN. A test that hangs ends its process, which says where; on a busy machine, too, a test needs a small
# part of that time. (A signal would end the test only, and its fixtures might hang once more.)
python_on_lan=(sim/lan /usr/bin/python3)
pytest=(-m pytest -q -p no:cacheprovider --timeout 600 --timeout-method thread)

# on_lan PRESET TESTS...: with the daemon of one build.
on_lan() {
    TARVELD=build/$1/tarveld "${python_on_lan[@]}" "${pytest[@]}" "${@:2}"
}

# The same on several LANs, since the tests mostly wait: the next that has nothing to do takes the next file.
on_lans() {
    TARVELD=build/$1/tarveld /usr/bin/python3 "${pytest[@]}" --dist loadfile \
        --tx "$((2 * jobs))*popen//python=${python_on_lan[*]}" "${@:2}"
}

# A sanitizer's finding ends the daemon, and with it the test.
system_tests() {
    on_lans "$1" tests/system
}

# For a build without a client.
daemon_tests() {
    on_lans "$1" "${@:2}" --ignore tests/system/client tests/system
}

# That the C programs of bench/floors do what the daemon does, so that the ratios to them mean something.
test_floors() {
    scripts/bench --build
    on_lan release tests/bench
}

count_instructions() {
    bench/gate | sed 's/^/note: /'
}

# Printed, not judged: other machines, and other programs on them, are faster and slower.
measure_shortly() {
    scripts/bench --short | sed 's/^/note: /'
}

# Those that wait for the daemon's own time-outs.
long_system_tests() {
    on_lans "$1" -m long tests/system
}

# Fails if a card does not take part; the seconds are printed.
thousand_cards() {
    scripts/bench --fleet | sed 's/^/note: /'
}

# As people build them, and installed in a Debian of their own.
packages_in_debian() {
    scripts/package
    tools/try_packages | sed 's/^/note: /'
}

plant_faults_of_byte_order() {
    scripts/target setup powerpc-gnu
    tools/mutate --big-endian
}

# Its last line is the sum of all.
hostile_world() {
    TARVELD=build/release/tarveld scripts/hostile --short | sed 's/^/note: /'
}

# At some of the calls of a change of the network; scripts/hostile tries all.
kills() {
    TARVELD=build/$1/tarveld sim/lan /usr/bin/python3 tests/hostile kills --job "IP configuration set" --points 40 |
        sed 's/^/note: /'
}

# What we bring for other programs, tried with those programs.
integrations() {
    # shellcheck source=scripts/test.d/prometheus.sh
    . scripts/test.d/prometheus.sh
    need_prometheus
    on_lan release "$@" tests/integrations
}

# Built, and tried in folders of their own: nothing of them is installed on this machine.
packages() {
    scripts/package --quick
    lintian --fail-on error,warning build/packages/*.changes
    # shellcheck source=scripts/test.d/prometheus.sh
    . scripts/test.d/prometheus.sh
    need_prometheus
    /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/packages
}

# Leaves in build/coverage/lines how often each line was reached. The programs themselves are for what no test links.
coverage_tests() {
    local folder=build/coverage program objects=()
    rm -rf "$folder/profiles"
    unit_tests coverage
    llvm-profdata merge --sparse --output "$folder/profile" "$folder"/profiles/*
    for program in "$folder"/tarvelctl "$folder"/unit_*; do
        objects+=(--object "$program")
    done
    # With ccache the names are seen from the folder of the build.
    llvm-cov export --format lcov --instr-profile "$folder/profile" "$folder/tarveld" "${objects[@]}" |
        sed "s|^SF:$PWD/\($folder/../../\)\?|SF:|" >"$folder/lines"
}

# line_coverage FOLDER ENOUGH: prints the share of the folder's lines that were reached, and names the others.
line_coverage() {
    awk -v folder="$1" -v enough="$2" -f scripts/test.d/coverage.awk build/coverage/lines
}
