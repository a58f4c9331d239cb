# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# What a flag of the compiler costs on the card.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/sizes.sh
. "${BASH_SOURCE[0]%/*}/sizes.sh"

# print_cost FLAG...: the daemon's own sources compiled once more, with the flags behind those that they have.
print_cost() {
    local directory again before after whole
    directory=$(build_directory powerpc-musl)
    again=$(mktemp -d)
    (cd "$directory" && quietly "$directory/cost.log" bash -ec "$(commands_with "$directory" "$again" "$*")")
    before=$(cd "$directory" && own_objects "$directory" | text_of)
    after=$(find "$again" -name '*.o' | text_of)
    whole=$(echo "$directory/tarveld" | text_of)
    rm -rf "$again"
    awk -v flags="$*" -v own="$before" -v more=$((after - before)) -v whole="$whole" 'BEGIN {
        printf "%s: %+d bytes, %+.2f %% of the daemon'\''s own text, %+.2f %% of the program'\''s\n",
            flags, more, 100 * more / own, 100 * more / whole }'
}

compile_commands() { ninja -C "$1" -t commands tarveld | grep ' -o src/'; }

own_objects() { compile_commands "$1" | grep -o ' -o src/[^ ]*' | cut -d ' ' -f 3; }

# commands_with BUILD FOLDER FLAGS: with their objects in FOLDER, numbered.
commands_with() {
    compile_commands "$1" | sed -E "s| -MD -MT [^ ]+ -MF [^ ]+||" |
        awk -v place="$2" -v flags="$3" '{ sub(/ -o src\/[^ ]*/, " " flags " -o " place "/" NR ".o"); print }'
}
