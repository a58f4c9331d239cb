# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# System tests and measurements on the card.
# shellcheck shell=bash

# shellcheck source=scripts/vcard.d/network.sh
. "${BASH_SOURCE[0]%/*}/network.sh"

test_card() {
    say "running tests/vcard"
    in_network /usr/bin/python3 -m pytest -p no:cacheprovider -q --timeout 600 --timeout-method thread "$root/tests/vcard" "$@"
}

measure_card() {
    in_network timeout -k 10 300 /usr/bin/python3 "$root/tests/vcard/measure.py"
}
