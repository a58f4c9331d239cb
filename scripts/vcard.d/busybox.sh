# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The virtual card's user space, built from Debian's source with the card's compiler.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/compiler.sh
. "${BASH_SOURCE[0]%/*}/../target.d/compiler.sh"

need_busybox() {
    cached busybox-source "$(version_of busybox)" fetch_busybox
    cached busybox "$(version_of busybox) $(key_of "$root"/scripts/vcard.d/busybox.sh "$root"/tools/vcard/busybox.config \
        "$root"/tools/vcard/bin/busybox-cc "$root"/tools/target/package-lock.json)" build_busybox
}

fetch_busybox() { debian_source busybox "$1"; }

build_busybox() {
    local work log="$cache/log/busybox"
    work=$(mktemp -d)
    cp -r "$cache/busybox-source/." "$work"
    sed -i 's/^extern struct globals \*const ptr_to_globals;/extern struct globals *ptr_to_globals;/' "$work/include/libbb.h"
    quietly "$log" busybox_make "$work" defconfig
    override_config "$root/tools/vcard/busybox.config" "$work/.config"
    quietly "$log" busybox_make "$work" silentoldconfig
    quietly "$log" busybox_make "$work" busybox
    cp "$work/busybox" "$1/busybox"
    powerpc-linux-gnu-strip "$1/busybox"
    rm -rf "$work"
}

busybox_make() {
    nice -n 10 make -C "$1" -j "$(nproc)" CROSS_COMPILE=powerpc-linux-gnu- CC="$root/tools/vcard/bin/busybox-cc" \
        AR=powerpc-linux-musl-ar SKIP_STRIP=y HOSTCC=gcc "$2"
}

# override_config WANTED CONFIG: takes the lines about the wanted options out and puts the wanted ones in.
override_config() {
    local line option
    while IFS= read -r line; do
        option=$(grep -o 'CONFIG_[A-Z0-9_]*' <<<"$line" | head -n 1) || continue
        sed -i "/^$option=/d; /^# $option is not set/d" "$2"
        printf '%s\n' "$line" >>"$2"
    done < <(grep -E '^(CONFIG_|# CONFIG_.* is not set)' "$1")
}
