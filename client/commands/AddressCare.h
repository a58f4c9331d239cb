// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/messages/IpConfiguration.h"
#include "client/model/Result.h"

#include <optional>
#include <string>

struct Context;

// Looks at the address that the card of that name shall get, if it is a static one, and tells what it saw as
// `address_state`. `now` is what the card says that it has, if it is known. Throws unless the address may be given, or
// --force goes over that with a warning.
Task<void> lookAtAddress(Context& context, std::string card, InterfaceConfig wanted, std::optional<IpConfiguration> now,
                         Result& result);
