#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Usage: link_consumer.sh CMAKE BUILD-DIRECTORY NM EMULATOR COMPILER [FLAG...]
#
# Installs the time settings by themselves, looks at the names that the library gives away, and links and runs a program
# with nothing else of this tree. EMULATOR is empty, or a command with a semicolon between its words.

set -euo pipefail

cmake=$1
build=$2
nm=$3
IFS=';' read -ra emulator <<<"$4"
compiler=("${@:5}")
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

operations=$("$nm" --extern-only --defined-only --demangle "$prefix/lib/libtimesettings.a" |
    sed -n 's/^[0-9a-f]* . \([^(]*\).*/\1/p' | sort | paste -sd ' ')
expected="tsGetTimeReference tsIsReplicationNeeded tsSetReplicationDone tsSetTimeReference"
if [ "$operations" != "$expected" ]; then
    echo "global are not the operations alone:" "$operations" >&2
    exit 1
fi

"${compiler[@]}" -std=c++20 -I "$prefix/include" "$here/consumer.cpp" -L "$prefix/lib" -ltimesettings -o "$prefix/consumer"
"${emulator[@]}" "$prefix/consumer"
