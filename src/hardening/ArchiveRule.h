// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Why an archive must not be unpacked, as a sentence's rest behind its name, or an empty text if it may be: one of its
// members must not be on a card (hardening/MemberRules.h), or all of them are larger than `most` bytes. `names` is the
// whole output of `tar -t` and `details` that of `tar -tv`. `files` are then the paths of the members that are no
// directories, without "./" in front.
[[nodiscard]] std::string objectionToArchive(std::string_view names, std::string_view details, std::uint64_t most,
                                             std::vector<std::string>& files);
