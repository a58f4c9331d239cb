// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Queries.h"
#include "client/model/Result.h"
#include "client/output/Columns.h"

[[nodiscard]] std::vector<Column> timeColumns();
// How `time get` and `time set` show a card's time.
void report(const TimeReading& reading, Result& result);
