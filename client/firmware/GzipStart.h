// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/HeldFile.h"

// Does a file begin with one that gzip made of nothing, and go on with another that gzip made?
[[nodiscard]] bool beginsWithEmptyGzip(const HeldFile& file);
