// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/messages/Versions.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The version of a component; nothing if the card does not have it.
[[nodiscard]] std::optional<std::string> versionOf(const std::vector<Component>& components, std::string_view id);

// The components that not all of the cards have in the same version, in the order in which they first appear.
[[nodiscard]] std::vector<std::string> differingComponents(const std::vector<std::vector<Component>>& cards);

// A file of expected versions: a component and its version on each line, # starts a comment. Throws a badFile
// Failure that names the line, and a usage Failure if there is none.
[[nodiscard]] std::vector<Component> parseExpectedVersions(std::string_view text, const std::string& fileName);

// The expected components that the card has not, or in another version.
[[nodiscard]] std::vector<Component> unmetExpectations(const std::vector<Component>& card,
                                                       const std::vector<Component>& expected);
