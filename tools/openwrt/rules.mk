# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Stands in for OpenWrt's rules.mk: just enough to run the package's install recipe without the SDK.

INCLUDE_DIR := $(TOPDIR)/include
INSTALL_DIR := install -d -m0755
INSTALL_BIN := install -m0755
INSTALL_CONF := install -m0600
INSTALL_DATA := install -m0644
PKG_INSTALL_DIR = $(WORK)/ipkg-install
