# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# How large the programs are.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/build.sh
. "${BASH_SOURCE[0]%/*}/build.sh"

print_sizes() {
    local toolchain program file
    printf '%-14s %-12s %10s %10s %10s\n' toolchain program bytes text data+bss
    for toolchain in "$@"; do
        for program in tarveld tarvelctl; do
            file=$(build_directory "$toolchain")/$program
            [[ ! -x $file ]] || print_size "$toolchain" "$program" "$file"
        done
        printf '%-14s %-12s %10s %10s\n' "$toolchain" "own, daemon" "" "$(own_libraries "$toolchain" | text_of)"
    done
}

# One library is for others, and has the daemon's objects once more; three are for the hardened build.
own_libraries() {
    find "$(build_directory "$1")/src" -name '*.a' ! -name libtimesettings.a ! -name libtarveld_hardening.a \
        ! -name libtarveld_archive_rules.a ! -name libtarveld_defences.a
}

text_of() { xargs size | awk 'NR > 1 { text += $1 } END { print text }'; }

print_size() {
    local text data bss
    read -r text data bss _ < <(size "$3" | tail -n 1)
    printf '%-14s %-12s %10s %10s %10s\n' "$1" "$2" "$(stat -c %s "$3")" "$text" "$((data + bss))"
}
