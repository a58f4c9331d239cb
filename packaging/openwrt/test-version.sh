#!/bin/sh
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# The daemon takes no options, so it cannot be asked for its version: what can be told is that it is installed and that
# its shared libraries are all there. Called with the package's name and its version.

case "$1" in
tarveld)
	[ -x /usr/sbin/tarveld ] || exit 1
	ldd /usr/sbin/tarveld | grep 'not found' && exit 1
	exit 0
	;;
*)
	exit 0
	;;
esac
