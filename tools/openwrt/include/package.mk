# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Stands in for OpenWrt's package.mk: demands what a package in a feed must say, prints it, runs its install recipe into
# $(WORK)/<package>, and leaves its scripts as <package>.<script> in $(WORK).

required := PKG_NAME PKG_VERSION PKG_RELEASE PKG_SOURCE PKG_SOURCE_URL PKG_HASH PKG_MAINTAINER PKG_LICENSE PKG_LICENSE_FILES
$(foreach field,$(required),$(if $(strip $($(field))),,$(error $(field) is missing)))

# Must stand in $(2), a definition with one "NAME:=value" a line.
field = $(if $(findstring $(3):=,$(2)),,$(error Package/$(1) has no $(3)))

# A failing command in the middle of a recipe fails it, as each of its lines is a command of its own.
define BuildPackage
$(foreach name,SECTION CATEGORY TITLE URL DEPENDS,$(call field,$(1),$(value Package/$(1)),$(name)))
$(if $(value Package/$(1)/description),,$(error there is no description of $(1)))
$(if $(value Package/$(1)/install),,$(error there is no install recipe of $(1)))
$(foreach script,postinst postrm,$(call leave,$(1),$(script)))

install-$(1):
	$(call Package/$(1)/install,$(WORK)/$(1))
.PHONY: install-$(1)
endef

leave = $(if $(value Package/$(1)/$(2)),$(file >$(WORK)/$(1).$(2),$(Package/$(1)/$(2))))

metadata:
	@echo "$(PKG_NAME) $(PKG_VERSION)-$(PKG_RELEASE) $(PKG_LICENSE)"
options:
	@echo "$(CMAKE_OPTIONS)"
.PHONY: metadata options
