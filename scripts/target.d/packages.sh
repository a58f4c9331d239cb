# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Debian packages: which are installed, and the sources behind them.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/common.sh
. "${BASH_SOURCE[0]%/*}/common.sh"

as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    else
        command -v sudo >/dev/null || die "'$*' needs root or sudo"
        sudo "$@"
    fi
}

is_installed() { [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }

# need_packages NAME...: installs what is missing, and asks for root only then.
need_packages() {
    local missing=() name
    for name in "$@"; do
        is_installed "$name" || missing+=("$name")
    done
    [[ ${#missing[@]} -eq 0 ]] && return
    say "installing ${missing[*]}"
    quietly "$cache/log/apt" install_packages "${missing[@]}"
}

# Another apt may be at work on this machine: the lock on packages has a time limit of its own, the one on the lists has not.
install_packages() {
    local _ options=(-o DPkg::Lock::Timeout=300 -y --no-install-recommends)
    for _ in {1..10}; do
        as_root env DEBIAN_FRONTEND=noninteractive apt-get "${options[@]}" install "$@" && return
        as_root apt-get update || sleep 5
    done
    return 1
}

# A machine that was just made may know no packages at all.
need_package_lists() {
    apt-cache show libxml2-dev >/dev/null 2>&1 || quietly "$cache/log/apt-update" as_root apt-get update
}

# The version apt would install; part of the key of whatever is built from that package's source.
version_of() { apt-cache show --no-all-versions "$1" | sed -n 's/^Version: //p' | head -n 1; }

# apt's lists of sources, in a private copy: the machine's own configuration stays as it is, and no root is needed.
apt_sources() {
    apt-get -o Dir::Etc::sourcelist="$cache/apt/sources.list" -o Dir::Etc::sourceparts="$cache/apt/sources.list.d" \
        -o Dir::State::lists="$cache/apt/lists" -o Dir::Cache="$cache/apt/cache" -o APT::Sandbox::User= "$@"
}

refresh_apt_sources() {
    mkdir -p "$cache"/apt/{sources.list.d,lists/partial,cache/archives/partial}
    local file
    : >"$cache/apt/sources.list"
    [[ ! -f /etc/apt/sources.list ]] || sed 's/^deb /deb-src /' /etc/apt/sources.list >"$cache/apt/sources.list"
    for file in /etc/apt/sources.list.d/*.list; do
        [[ ! -f $file ]] || sed 's/^deb /deb-src /' "$file" >"$cache/apt/sources.list.d/${file##*/}"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [[ ! -f $file ]] || sed 's/^Types:.*/Types: deb-src/' "$file" >"$cache/apt/sources.list.d/${file##*/}"
    done
    # A repository without sources makes the update fail as a whole; whether the one we need came is seen just below.
    apt_sources update || true
}

# debian_source PACKAGE DESTINATION: the source with Debian's patches applied. apt has checked the hashes already.
debian_source() {
    local package=$1 destination=$2 work
    work=$(mktemp -d)
    quietly "$cache/log/apt-source-$package" refresh_apt_sources
    (cd "$work" && quietly "$cache/log/apt-source-$package" apt_sources source --download-only "$package")
    quietly "$cache/log/dpkg-source-$package" dpkg-source --no-check -x "$work"/*.dsc "$work/tree"
    rm -rf "$destination"
    mv "$work/tree" "$destination"
    rm -rf "$work"
}
