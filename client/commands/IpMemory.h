// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/messages/IpConfiguration.h"

#include <optional>
#include <string>

// What an interface of a card was before the last change made from here, so that a lost card can be rescued in a
// later run. Kept in $XDG_STATE_HOME/tarvelctl or ~/.local/state/tarvelctl, one small file for each card.

// False if it cannot be written; the change itself does not depend on it.
bool rememberIp(const std::string& card, const InterfaceConfig& interface);

[[nodiscard]] std::optional<InterfaceConfig> rememberedIp(const std::string& card);
