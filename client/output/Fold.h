// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Result.h"

#include <vector>

// Results that differ in nothing but their target become one, whose target names all of them: "card[01-03],card07".
// Measured values (such as seconds), and fields of one target alone, are no difference, and are left out of what was
// put together.
[[nodiscard]] std::vector<Result> fold(std::vector<Result> results);
