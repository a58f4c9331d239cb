// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/SendGate.h"

void SendGate::admit(const Request& request) const
{
    if (mode == DryRun::everything || (mode == DryRun::changes && !changesNothing(request))) {
        throw NotSent{request};
    }
}
