# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Stands in for OpenWrt's cmake.mk, of which the package uses only the options it adds to.

CMAKE_OPTIONS ?=
