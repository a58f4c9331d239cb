# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Words that scripts/target and scripts/vcard share: where things are, how they speak, and what is kept between runs.
# shellcheck shell=bash

root=$(cd "${BASH_SOURCE[0]%/*}/../.." && pwd)
export TARVELD_CACHE=${TARVELD_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tarveld}
cache=$TARVELD_CACHE
export PATH="$root/tools/target/bin:$PATH"
# Where ccache is used, what one clone has compiled serves the next.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

say() { printf '%s: %s\n' "${0##*/}" "$*"; }

die() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# quietly LOG COMMAND...: runs COMMAND with its output in LOG, which is shown only when it fails.
quietly() {
    local log=$1
    shift
    mkdir -p "${log%/*}"
    if ! "$@" >"$log" 2>&1 </dev/null; then
        tail -n 40 "$log" >&2
        die "failed: $* (all of it in $log)"
    fi
}

# key_of FILE...: one word that changes when one of the files does.
key_of() { cat "$@" | sha256sum | cut -c1-16; }

# cached NAME KEY BUILDER: makes $cache/NAME with BUILDER, unless it is there already and was made with the same KEY.
# The key is written last, so a build that was interrupted is made anew. The builder runs in a bash of its own, where
# "set -e" holds whatever the caller stands in, and finds its destination in $1.
cached() {
    local place="$cache/$1" key=$2 builder=$3
    mkdir -p "$cache"
    (
        flock 9
        if [[ "$(cat "$place/.key" 2>/dev/null)" != "$key" ]]; then
            say "building $1 (kept in $place)"
            rm -rf "$place"
            mkdir -p "$place"
            "$builder" "$place"
            printf '%s\n' "$key" >"$place/.key"
        fi
    ) 9>"$cache/.$1.lock"
}
