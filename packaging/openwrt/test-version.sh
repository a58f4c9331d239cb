#!/bin/sh
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
# Called with a package's name and its version. The daemon takes no options, so it cannot be asked: what can be told is
# that it is installed and that its shared libraries are all there.

case "$1" in
tarveld)
	[ -x /usr/sbin/tarveld ] || exit 1
	ldd /usr/sbin/tarveld | grep 'not found' && exit 1
	exit 0
	;;
tarvelctl)
	tarvelctl --version | grep -F "$2"
	;;
*)
	exit 0
	;;
esac
