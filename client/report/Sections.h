// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/Fleet.h"
#include "client/report/Html.h"

// The parts of a report, one file each.

// How many answered, and of what there is how much to look at; each number leads to its part.
[[nodiscard]] Html summarySection(const Fleet& fleet);
// Who did not answer, or not all: each sentence once, with the cards it is true of.
[[nodiscard]] Html failuresSection(const Fleet& fleet);
// A row for each card, a column for each component.
[[nodiscard]] Html versionsSection(const Fleet& fleet);
// The skews as dots over an axis, and as a table.
[[nodiscard]] Html clocksSection(const Fleet& fleet);
// Of both interfaces, and of where the card was asked.
[[nodiscard]] Html addressesSection(const Fleet& fleet);
