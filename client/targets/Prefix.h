// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// "10.0.0.0/29" -> 10.0.0.1 to 10.0.0.6: the hosts of an IPv4 network; nothing if the text is no address with a prefix.
// Throws a usage Failure for a network of more than 1022 hosts, or one that has none but its ends.
[[nodiscard]] std::optional<std::vector<std::string>> hostsOf(std::string_view text);
