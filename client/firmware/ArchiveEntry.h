// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "hardening/MemberRules.h"

struct archive_entry;

// A member, from what the library tells of it.
[[nodiscard]] ArchiveMember memberOf(archive_entry* entry);
