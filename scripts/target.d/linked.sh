# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# What the card's programs are linked from, and whether somebody else gets the same bytes.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/build.sh
. "${BASH_SOURCE[0]%/*}/build.sh"

card_programs=(tarveld tarvelctl)

# Only what goes onto the card.
build_card() {
    build_tree powerpc-musl "${card_programs[@]}"
    list_linked
}

# The linker tells what it takes when a program is linked once more; then the bytes must be the same, too.
list_linked() {
    local directory list program link scratch
    directory=$(build_directory powerpc-musl)
    list="$directory/linked.txt"
    [[ ! $list -nt $directory/tarveld || ! $list -nt $directory/tarvelctl ]] || return 0
    scratch=$(mktemp -d)
    for program in "${card_programs[@]}"; do
        link=$(ninja -C "$directory" -t commands "$program" | tail -n 1 |
            sed "s| -o $program | -v -o $scratch/$program |")
        (cd "$directory" && quietly "$scratch/$program.log" bash -c "$link")
        cmp "$scratch/$program" "$directory/$program" || die "linking $program again gave other bytes"
    done
    "$root/tools/target/linked.py" "$cache" powerpc-musl "$scratch"/*.log >"$scratch/linked.txt"
    mv "$scratch/linked.txt" "$list"
    rm -rf "$scratch"
}

# The compiler is taken along, since its hash was checked when it came; everything else is made anew, and nothing comes
# from ccache.
compare_with_another_build() {
    local place copy directory file
    directory=$(build_directory powerpc-musl)
    place=$(mktemp -d)
    copy="$place/a-folder-of-another-name/tarveld"
    mkdir -p "$copy" "$place/cache"
    copy_tree "$copy"
    cp -a --reflink=auto "$cache/zig" "$place/cache"
    say "building once more in $copy"
    CCACHE_DISABLE=1 TARVELD_CACHE="$place/cache" "$copy/scripts/target" card
    for file in "${card_programs[@]}"; do
        cmp "$directory/$file" "$copy/build/target/$file" || die "$file differs; see $copy"
        say "the same: $(cd "$directory" && sha256sum "$file")"
    done
    diff <(without_sums "$directory/linked.txt") <(without_sums "$copy/build/target/linked.txt") ||
        die "linked.txt differs; see $copy"
    rm -rf "$place"
}

# The libraries have the cache's path in their debugging information, which no program keeps.
without_sums() {
    sed -E 's/ [0-9a-f]{64} / /' "$1"
}

# copy_tree DESTINATION: what is tracked or could be.
copy_tree() {
    (
        cd "$root" || exit
        git ls-files -z --cached --others --exclude-standard |
            while IFS= read -r -d '' name; do [[ ! -e $name ]] || printf '%s\0' "$name"; done |
            tar --null --files-from=- --create
    ) | tar --extract --directory "$1"
}
