// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/messages/Versions.h"
#include "client/model/Result.h"

// How the commands that show a card's versions list them: a component each.
void report(const Versions& versions, Result& result);
