// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Queries.h"
#include "client/model/Result.h"
#include "client/output/Columns.h"

// How `time get` and `time set` show a card's time: seconds for the skews, UTC for the clock.
[[nodiscard]] std::vector<Column> timeColumns();
void report(const TimeReading& reading, Result& result);
