// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// libxml2 is the real one. The version that it is asked for is noted down instead, since the real check says nothing
// about a library that is new enough; the clean-up at the end is noted down and made.

#include "support/Journal.h"

// Without libxml2's headers, and weak: programs that do not use the library have this file, too.
extern "C" [[gnu::weak]] void xmlCleanupParser();

extern "C" void fake_xmlCheckVersion(int version)
{
    recordCall("xmlCheckVersion", std::to_string(version));
}

extern "C" void fake_xmlCleanupParser()
{
    recordCall("xmlCleanupParser", {});
    xmlCleanupParser();
}
