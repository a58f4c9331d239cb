# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# What the package's scripts do on a card: the init script, the one for the firewall's settings, and those that run after
# an installation and after a removal. Each runs as it was installed, in the card's own ash where there is one.
# tools/check_openwrt says where things are.
# shellcheck disable=SC2154

shells() {
    ash=(sh)
    [[ ! -x $cache/busybox/busybox ]] || ash=(qemu-ppc "$cache/busybox/busybox" ash)
}

# A card with the package's files, the devices eth0 and eth1, and a firewall with one zone.
new_card() {
    rm -rf "$work/card"
    cp -r "$work/tarveld" "$work/card"
    mkdir -p "$work"/card/etc/{config,init.d} "$work"/card/sys/class/net/{eth0,eth1}
    echo "config zone" >"$work/card/etc/config/firewall"
    # shellcheck disable=SC2016
    printf '#!/bin/sh\necho "firewall $*" >>/etc/calls\n' >"$work/card/etc/init.d/firewall"
    chmod +x "$work/card/etc/init.d/firewall"
}

on_card() { "$here/openwrt/on_card" "$work/card" "$@"; }

# Says what the scripts asked uci and the firewall for since new_card.
calls() { cat "$work/card/etc/calls" 2>/dev/null || true; }

started() { on_card "${ash[@]}" "$here/openwrt/rc.common" /etc/init.d/tarveld start; }

check_init_script() {
    new_card
    expect "what procd is told" "$(started)" "open_instance
set_param 'command' '/usr/sbin/tarveld'
set_param 'respawn' '3600' '5' '0'
set_param 'netdev' 'eth0' 'eth1'
set_param 'file' '/etc/config/system'
set_param 'limits' 'nofile=1024 1024'
set_param 'no_new_privs' '1'
set_param 'stdout' '1'
set_param 'stderr' '1'
close_instance
add_reload_trigger 'system'
add_reload_interface_trigger 'lanvemt2eth1'
add_reload_interface_trigger 'lanvemt2eth2'
links 'S50' 'K10'"
}

# procd's init scripts, which the daemon runs, hold a lock as descriptor 1000, under the limit that the daemon has.
check_descriptor_limit() {
    local limit
    limit=$(started | sed -n "s/^set_param 'limits' 'nofile=\([0-9]*\) .*/\1/p")
    bash -c "ulimit -n $limit; exec 1000>'$work/lock'" || fail "no init script of procd can run under this limit"
}

check_warnings() {
    new_card
    mkdir "$work/card/sys/class/net/eth0/brport"
    rmdir "$work/card/sys/class/net/eth1"
    expect "warnings" "$(started | grep logger)" "\
logger '-t' 'tarveld' '-p' 'daemon.warn' 'eth0 is a port of a bridge: no request over UDP will be heard on it'
logger '-t' 'tarveld' '-p' 'daemon.warn' \
'there is no network device eth1: the daemon will end, and be started again every 5 s'"
}

# As the card does it: in a shell of its own, whose end says whether the script is done or kept for another time.
apply_defaults() { on_card "${ash[@]}" -c '. /etc/uci-defaults/60-tarveld'; }

check_firewall_rule() {
    new_card
    apply_defaults || fail "the firewall's settings are not done"
    expect "the firewall's zone and rule" "$(grep '^config' "$work/card/etc/config/firewall")" "config zone
config rule 'tarveld'"
    apply_defaults || fail "the rule that is there is not enough"
    expect "asked for the rule twice" "$(calls)" "uci -q get firewall.tarveld
uci import -m firewall
uci commit firewall
uci -q get firewall.tarveld"
}

check_no_firewall() {
    new_card
    : >"$work/card/etc/config/firewall"
    ! apply_defaults || fail "a rule for an empty firewall"
    rm "$work/card/etc/config/firewall"
    ! apply_defaults || fail "a rule for no firewall"
    expect "asked without a firewall" "$(calls)" ""
}

# maintainer SCRIPT [NAME=VALUE...]: as opkg and apk run it.
maintainer() { on_card env "${@:2}" "${ash[@]}" "$work/tarveld.$1"; }

check_after_installation() {
    new_card
    maintainer postinst IPKG_INSTROOT=/image
    expect "asked when an image is made" "$(calls)" ""
    maintainer postinst
    expect "asked on a card that has not applied its defaults yet" "$(calls)" "uci -q get firewall.tarveld
uci import -m firewall
uci commit firewall
firewall reload"
    new_card
    rm "$work/card/etc/uci-defaults/60-tarveld"
    maintainer postinst
    expect "asked on a card that has" "$(calls)" "firewall reload"
    rm "$work/card/etc/init.d/firewall"
    maintainer postinst || fail "no installation without a firewall"
}

check_after_removal() {
    new_card
    apply_defaults
    rm "$work/card/etc/calls"
    maintainer postrm PKG_UPGRADE=1
    maintainer postrm IPKG_INSTROOT=/image
    expect "asked at an upgrade, or in an image" "$(calls)" ""
    maintainer postrm
    expect "asked at a removal" "$(calls)" "uci -q delete firewall.tarveld
uci commit firewall
firewall reload"
    new_card
    maintainer postrm || fail "no removal without the rule"
    expect "asked without the rule" "$(calls)" "uci -q delete firewall.tarveld
firewall reload"
    rm "$work/card/etc/init.d/firewall" "$work/card/etc/calls"
    maintainer postrm || fail "no removal without a firewall"
    expect "asked without a firewall" "$(calls)" "uci -q delete firewall.tarveld"
}

# The link that the daemon itself looks at.
check_kept_links() {
    local link
    link=$(sed -n 's/.*"\(\/etc\/rc.d\/[^"]*\)".*/\1/p' "$root/src/timesettings/NtpService.cpp")
    grep -qx "$link" "$work/tarveld/lib/upgrade/keep.d/tarveld" || fail "sysupgrade loses $link"
}

check_card() {
    shells
    check_init_script
    check_descriptor_limit
    check_warnings
    check_firewall_rule
    check_no_firewall
    check_after_installation
    check_after_removal
    check_kept_links
}
