# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The cables of the virtual card. With the right to make network devices it hangs on two taps in a network namespace that
# ends with its last program; without, on qemu's user-mode network, which carries TCP only.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/packages.sh
. "${BASH_SOURCE[0]%/*}/../target.d/packages.sh"

# in_network COMMAND...: runs COMMAND in a namespace with tap0 and tap1, the other ends of the card's eth0 and eth1.
in_network() {
    local tools
    tools=$(declare -f lay_cables)
    # shellcheck disable=SC2016
    as_network_root unshare --net --mount --propagation private \
        bash -c "$tools"'; set -euo pipefail; lay_cables; exec "$@"' in_network "$@"
}

lay_cables() {
    local number
    ip link set lo up
    for number in 0 1; do
        ip tuntap add dev "tap$number" mode tap
        ip address add "10.0.$number.1/24" broadcast + dev "tap$number"
        ip link set "tap$number" up
    done
}

# Whoever may open the tap device needs only a user namespace; it is often root's alone.
as_network_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    elif [[ -w /dev/net/tun ]] && unshare --user --map-root-user true 2>/dev/null; then
        unshare --user --map-root-user -- "$@"
    else
        as_root env HOME="$HOME" TARVELD_CACHE="$cache" PATH="$PATH" "$@"
    fi
}
