// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "hardening/MemberRules.h"

#include <optional>
#include <string_view>
#include <vector>

// The members of an archive in their order, from what a tar says of it, GNU's or busybox's: the output of `tar -t` in
// `names` and that of `tar -tv` in `details`, both whole. Nothing if the two do not belong together, or if a line can
// be read in two ways: then somebody has chosen names and owners that look like the rest of a line.
std::optional<std::vector<ArchiveMember>> readListing(std::string_view names, std::string_view details);
