// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Target.h"
#include "client/model/Failure.h"
#include "client/wire/Network.h"

#include <vector>

// Why a card is not changed where the groups file says that it is: it answered from elsewhere, or not at all.
[[nodiscard]] Failure staleNote(const Target& target, const std::vector<CardReply>& answers);
[[nodiscard]] Failure notHeard(const Target& target, const Failure& silence);
