# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Unit and system tests with the binaries that were built for the card.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/build.sh
. "${BASH_SOURCE[0]%/*}/build.sh"
# shellcheck source=scripts/vcard.d/busybox.sh
. "${BASH_SOURCE[0]%/*}/../vcard.d/busybox.sh"

# The toolchain files name the emulator, and CMake starts every test with it. Most of their time is the client's, which waits
# for cards.
run_unit_tests() {
    say "unit tests, $1"
    ctest --test-dir "$(build_directory "$1")" -j "$((3 * $(nproc)))" --output-on-failure --timeout 120 --progress
}

# With the card's own build. The simulated card is this machine's; only the daemon on it is the real card's. The tests of
# the client are left out: they look at a client, and that would be this machine's.
run_system_tests() {
    build_host_sim
    say "system tests, powerpc-musl under qemu-ppc"
    emulated_on_lans "$(build_directory powerpc-musl)" --ignore "$root/tests/system/client" "$root/tests/system"
}

# With the card's tar. The system tests have all attacks on the build as designed, but with this machine's tar.
run_attacks() {
    local attacks="$root/tests/system/attacks"
    build_host_sim
    make_tar "$root/build/target-host"
    export TARVEL_SIM_TAR="$root/build/target-host/tar"
    say "attacks by archives, as designed, powerpc-musl under qemu-ppc"
    emulated_on_lans "$(build_directory powerpc-musl)" "$attacks/test_archives.py" "$attacks/test_signature.py"
    say "attacks, hardened, powerpc-musl under qemu-ppc"
    emulated_on_lans "$hardened_directory" "$attacks"
}

# make_tar DIRECTORY: leaves a program there that is the card's tar on this machine; TARVEL_SIM_TAR names it to simulated
# cards.
make_tar() {
    printf '#!/bin/sh\nexec qemu-ppc %q tar "$@"\n' "$cache/busybox/busybox" >"$1/tar"
    chmod 755 "$1/tar"
}

# emulated_on_lans DIRECTORY TESTS...: with the daemon that was built there.
emulated_on_lans() {
    TARVELD="qemu-ppc $1/tarveld" TARVEL_SIM_BIN="$root/build/target-host/sim/bin" PYTHONPATH="$root/tools/target" \
        /usr/bin/python3 -m pytest -p no:cacheprovider -p emulated -q --timeout 600 --timeout-method thread \
        --tx "$(nproc)*popen//python=$root/sim/lan /usr/bin/python3" --dist loadfile "${@:2}"
}

build_host_sim() {
    local directory="$root/build/target-host"
    need_packages g++ libxml2-dev iproute2 python3-pytest python3-pytest-timeout python3-pytest-xdist strace
    quietly "$directory/configure.log" cmake -G Ninja -S "$root" -B "$directory" -DTARVELD_SIM=ON -DTARVELD_CLIENT=OFF
    quietly "$directory/build.log" cmake --build "$directory" -j "$(nproc)" --target sim_programs
}
