# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Stands in for OpenWrt's package.mk: demands what a package in a feed must say, prints it, and runs its install recipe.

required := PKG_NAME PKG_VERSION PKG_RELEASE PKG_SOURCE PKG_SOURCE_URL PKG_HASH PKG_MAINTAINER PKG_LICENSE PKG_LICENSE_FILES
$(foreach field,$(required),$(if $(strip $($(field))),,$(error $(field) is missing)))


# Must stand in $(1), a definition with one "NAME:=value" a line.
field = $(if $(findstring $(2):=,$(1)),,$(error Package/$(PKG_NAME) has no $(2)))

# A failing command in the middle of a recipe fails it, as each of its lines is a command of its own.
define BuildPackage
$(foreach name,SECTION CATEGORY TITLE URL DEPENDS,$(call field,$(value Package/$(1)),$(name)))
$(if $(value Package/$(1)/description),,$(error there is no description))
$(if $(value Package/$(1)/install),,$(error there is no install recipe))

metadata:
	@echo "$(PKG_NAME) $(PKG_VERSION)-$(PKG_RELEASE) $(PKG_LICENSE)"
options:
	@echo "$(CMAKE_OPTIONS)"
install:
	$(call Package/$(1)/install,$(WORK)/root)
.PHONY: metadata options install
endef
