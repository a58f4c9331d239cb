# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Unit and system tests with the binaries that were built for the card.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/build.sh
. "${BASH_SOURCE[0]%/*}/build.sh"

# The toolchain files name the emulator, and CMake starts every test with it.
run_unit_tests() {
    say "unit tests, $1"
    ctest --test-dir "$(build_directory "$1")" -j "$(nproc)" --output-on-failure --timeout 120 --progress
}

# With the card's own build. The simulated card is this machine's; only the daemon on it is the real card's. The tests of
# the client are left out: they look at a client, and that would be this machine's.
run_system_tests() {
    local directory
    directory=$(build_directory powerpc-musl)
    build_host_sim
    say "system tests, powerpc-musl under qemu-ppc"
    TARVELD="qemu-ppc $directory/tarveld" TARVEL_SIM_BIN="$root/build/target-host/sim/bin" \
        PYTHONPATH="$root/tools/target" \
        /usr/bin/python3 -m pytest -p no:cacheprovider -p emulated -q --timeout 600 --timeout-method thread \
        -d --tx "$(nproc)*popen//python=$root/sim/lan /usr/bin/python3" --dist loadfile \
        --ignore "$root/tests/system/client" "$root/tests/system"
}

build_host_sim() {
    local directory="$root/build/target-host"
    need_packages g++ libxml2-dev iproute2 python3-pytest python3-pytest-timeout python3-pytest-xdist strace
    quietly "$directory/configure.log" cmake -G Ninja -S "$root" -B "$directory" -DTARVELD_SIM=ON -DTARVELD_CLIENT=OFF
    quietly "$directory/build.log" cmake --build "$directory" -j "$(nproc)" --target sim_programs
}
