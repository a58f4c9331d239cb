# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# What the tests of the installed programs share. Packages that are only unpacked are tested by the same scripts, with
# TARVEL_ROOT for their folder.

set -euo pipefail

export TARVEL_ROOT=${TARVEL_ROOT:-}
work=${AUTOPKGTEST_TMP:-$(mktemp -d)}
# Nothing of whoever runs this counts, and nothing is left with them.
export HOME=$work LC_ALL=C.UTF-8
unset XDG_CONFIG_HOME XDG_STATE_HOME XDG_CACHE_HOME

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# Goes on only on the client side of a fresh LAN, with which all ends that runs there.
on_lan() {
    [ -n "${TARVEL_LAN:-}" ] || exec tarvel-lan "$(realpath "$0")"
}

# start_cards N: card1 and so on.
start_cards() {
    tarvel-card run --cards "$1" >"$work/cards" 2>&1 &
    until grep -qs Ctrl-C "$work/cards"; do
        kill -0 $! 2>/dev/null || fail "no cards: $(cat "$work/cards")"
        sleep 0.1
    done
}

# expect WHAT WANTED FOUND
expect() {
    [ "$2" = "$3" ] || fail "$1: expected '$2', found '$3'"
    echo "$1: as expected"
}
