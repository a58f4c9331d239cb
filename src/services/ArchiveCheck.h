// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <vector>

// Looks at an archive in the working directory before it is unpacked, through the card's own tar. For the hardened
// build. `files` gets the paths of all members that are no directories. Returns 0, or -1 after a warning that says
// why the archive must not be unpacked.
int checkArchive(const std::string& archive, std::vector<std::string>& files);
