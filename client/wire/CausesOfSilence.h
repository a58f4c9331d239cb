// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Frame.h"

#include <fmt/core.h>
#include <string>

// Why nobody may have answered by a name, for people.
[[nodiscard]] inline std::string causesOfSilence()
{
    return fmt::format(
        "no card has this name (case counts), it or its daemon is down, it is busy (with an archive, an "
        "upgrade or its time service a card hears nothing), it is behind a router (broadcasts stay on the "
        "local network), or a firewall here drops the reply, which is a broadcast from the card's port {}",
        cardPort);
}
