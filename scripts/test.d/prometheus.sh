# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# shellcheck shell=bash
#
# Prometheus and its node_exporter, unpacked beside what is installed: installed, they would be daemons of this machine.

# shellcheck source=scripts/target.d/packages.sh
. scripts/target.d/packages.sh

prometheus_packages=(prometheus prometheus-node-exporter)

# Lists that are too old name a package that is gone.
download_prometheus() {
    local download=(apt-get -o APT::Sandbox::User=root download "${prometheus_packages[@]}")
    "${download[@]}" || { as_root apt-get update && "${download[@]}"; }
}

unpack_prometheus() {
    local destination=$1 work package
    work=$(mktemp -d)
    (cd "$work" && quietly "$cache/log/prometheus" download_prometheus)
    for package in "$work"/*.deb; do
        dpkg-deb -x "$package" "$destination"
    done
    rm -rf "$work"
}

# Puts its programs into the path.
need_prometheus() {
    local package key=
    need_package_lists
    for package in "${prometheus_packages[@]}"; do
        key+="$package $(version_of "$package") "
    done
    cached prometheus "$key" unpack_prometheus
    PATH="$cache/prometheus/usr/bin:$PATH"
}
