// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

// libxml2 is the real one. Only the version that it is asked for is noted down instead: the real check says nothing
// about a library that is new enough.

#include "support/Journal.h"

extern "C" void fake_xmlCheckVersion(int version)
{
    recordCall("xmlCheckVersion", std::to_string(version));
}
