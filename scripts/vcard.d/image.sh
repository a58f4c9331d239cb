# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# What the virtual card boots: an initramfs with busybox, the card's own files and the daemon.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/common.sh
. "${BASH_SOURCE[0]%/*}/../target.d/common.sh"

vcard="$root/build/vcard"

# Everything of the tree that runs on the card comes from the target build.
make_image() {
    local tree="$vcard/root"
    rm -rf "$tree"
    mkdir -p "$tree"/{bin,sbin,usr/bin,usr/sbin,proc,sys,dev,tmp,state,root,etc/rc.d}
    ln -s tmp "$tree/var"
    cp -r "$root/tools/vcard/root/." "$tree"
    install_busybox "$tree"
    install -m 755 "$root/build/target/tarveld" "$tree/usr/sbin/tarveld"
    install -m 755 "$root/build/target/sim/bin/uci" "$tree/sbin/uci"
    [[ ! -x $root/build/target/tarvelctl ]] || install -m 755 "$root/build/target/tarvelctl" "$tree/usr/bin/tarvelctl"
    install_floors "$tree"
    (cd "$tree" && find . -print0 | LC_ALL=C sort -z | cpio -0 -o -H newc -R 0:0 --quiet) | gzip -1 >"$vcard/initramfs.gz"
}

# For measurements only, which build them first.
install_floors() {
    local floor
    for floor in bench_same bench_bare; do
        [[ ! -x $root/build/target/$floor ]] || install -m 755 "$root/build/target/$floor" "$1/usr/bin/$floor"
    done
}

install_busybox() {
    local applet
    install -m 755 "$cache/busybox/busybox" "$1/bin/busybox"
    qemu-ppc "$1/bin/busybox" --list-full | while IFS= read -r applet; do
        mkdir -p "$1/${applet%/*}"
        [[ -e $1/$applet ]] || ln -s /bin/busybox "$1/$applet"
    done
}
