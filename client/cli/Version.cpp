// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Version.h"

std::string_view programVersion()
{
    return "tarvelctl " TARVELD_VERSION; // from CMakeLists.txt
}
