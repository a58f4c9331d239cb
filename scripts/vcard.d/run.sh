# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Starting a card for people.
# shellcheck shell=bash

# shellcheck source=scripts/vcard.d/image.sh
. "${BASH_SOURCE[0]%/*}/image.sh"

run_card() {
    local port=${VCARD_PORT:-50003}
    say "TCP port 50003 of the card is port $port of localhost; Ctrl-A X ends the card, Ctrl-A C is qemu's monitor"
    exec "$root/scripts/vcard.d/boot" "$vcard/disks" \
        "user,restrict=on,net=10.0.0.0/24,host=10.0.0.1,hostfwd=tcp:127.0.0.1:$port-10.0.0.10:50003" \
        "user,restrict=on,net=10.0.1.0/24,host=10.0.1.1" \
        -serial mon:stdio
}
