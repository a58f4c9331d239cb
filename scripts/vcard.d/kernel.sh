# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The virtual card's kernel from Debian's source. About 4 minutes; kept with kconfig's own program, which checks the
# package's Config.in later.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/packages.sh
. "${BASH_SOURCE[0]%/*}/../target.d/packages.sh"

kernel_package=linux-source-6.1
kernel_config="$root/tools/vcard/kernel.config"

need_kernel() {
    cached kernel "$(version_of $kernel_package) $(key_of "$kernel_config")" build_kernel
}

build_kernel() {
    local work log="$cache/log/kernel"
    work=$(mktemp -d)
    (cd "$work" && quietly "$log" apt-get download "$kernel_package")
    quietly "$log" unpack_kernel "$work"
    quietly "$log" kernel_make "$work" KCONFIG_ALLCONFIG="$kernel_config" allnoconfig
    check_kernel_config "$work/out/.config"
    quietly "$log" kernel_make "$work" vmlinux
    powerpc-linux-gnu-objcopy -S "$work/out/vmlinux" "$1/vmlinux"
    cp "$work/out/.config" "$1/config"
    cp "$work/out/scripts/kconfig/conf" "$1/kconfig-conf"
    rm -rf "$work"
}

unpack_kernel() {
    mkdir "$1/tree"
    dpkg-deb --fsys-tarfile "$1"/"$kernel_package"_*.deb | tar -xO "./usr/src/$kernel_package.tar.xz" |
        tar -xJ -C "$1/tree" --strip-components=1
    rm "$1"/*.deb
}

kernel_make() {
    local work=$1
    shift
    nice -n 10 make -s -j "$(nproc)" -C "$work/tree" O="$work/out" ARCH=powerpc CROSS_COMPILE=powerpc-linux-gnu- "$@"
}

# kconfig drops an option whose dependencies are missing without a word.
check_kernel_config() {
    local line
    grep '^CONFIG_.*=y' "$kernel_config" | while IFS= read -r line; do
        grep -qx "$line" "$1" || die "the kernel's configuration lost $line"
    done
}
