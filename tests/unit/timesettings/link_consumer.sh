#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Usage: link_consumer.sh CMAKE BUILD-DIRECTORY COMPILER [FLAG...]
#
# Installs the time settings by themselves and links a program with nothing else of this tree.

set -euo pipefail

cmake=$1
build=$2
compiler=("${@:3}")
here=$(dirname "${BASH_SOURCE[0]}")

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

"$cmake" --install "$build" --component timesettings --prefix "$prefix"
installed=$(cd "$prefix" && find . -type f | sort)
expected=$'./include/timesettings/TimeReference.h\n./lib/libtimesettings.a'
if [ "$installed" != "$expected" ]; then
    echo "installed is not the header and the library alone:" "$installed" >&2
    exit 1
fi

"${compiler[@]}" -std=c++20 -I "$prefix/include" "$here/consumer.cpp" -L "$prefix/lib" -ltimesettings -o "$prefix/consumer"
