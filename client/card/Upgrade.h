// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Observer.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/messages/Versions.h"
#include "client/model/Failure.h"
#include "client/wire/Network.h"

#include <optional>

// After an archive was taken for an upgrade, or may have been (`silence`: why nobody knows): the versions once the card
// serves again, which is when its upgrade script has ended. Throws a Failure that says what is not known, also when it
// is interrupted.
Task<Versions> awaitUpgrade(Network& network, Observer& observer, Endpoint endpoint, Seconds patience,
                            std::optional<Failure> silence);
