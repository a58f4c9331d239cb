// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/VersionsReport.h"

void report(const Versions& versions, Result& result)
{
    result.malformed = result.malformed || versions.malformed;
    result.listName = "components";
    for (const Component& component : versions.components) {
        result.list.push_back({{"component", component.id}, {"version", component.version}});
    }
}
