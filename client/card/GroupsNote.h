// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Target.h"
#include "client/engine/Task.h"
#include "client/model/Failure.h"
#include "client/wire/Network.h"

#include <optional>
#include <string>
#include <vector>

// Why a card is not changed where the groups file says that it is: it answered from elsewhere, or not at all.
[[nodiscard]] Failure staleNote(const Target& target, const std::vector<CardReply>& answers);
[[nodiscard]] Failure notHeard(const Target& target, const Failure& silence);

// Why no card is changed by its name for an address that has several.
[[nodiscard]] Failure severalNames(const std::string& doubt);

// Of a card that was heard from elsewhere, and that has the noted address in its settings: its answer from there.
// Nothing if nobody can be asked in a network of that address. Throws staleNote if it does not answer from there.
Task<std::optional<CardReply>> confirmNote(Network& network, Target target);
