# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# What the size of the card's daemon is made of.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/build.sh
. "${BASH_SOURCE[0]%/*}/build.sh"

print_symbols() {
    local directory own
    directory=$(build_directory powerpc-musl)
    mapfile -t own < <(find "$directory/src" -name '*.a')
    link_with_symbols "$directory"
    "$root/tools/target/symbols.py" "$directory/tarveld.symbols" "${own[@]}" \
        -- "$cache/sysroot-powerpc-musl/lib/libxml2.a"
}

# The program that ships has no symbols: the same is linked once more with them.
link_with_symbols() {
    local link
    link=$(ninja -C "$1" -t commands tarveld | tail -n 1 | sed 's/ -s / /; s/ -o tarveld / -o tarveld.symbols /')
    (cd "$1" && quietly "$1/symbols.log" bash -c "$link")
}
