// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// Takes the place of the card's log and returns its socket. To be called where the card's files are.
int takeLog(void);
