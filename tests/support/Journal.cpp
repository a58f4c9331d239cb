// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/Journal.h"

#include <algorithm>

namespace
{

std::vector<Call>& journal()
{
    static std::vector<Call> calls;
    return calls;
}

} // namespace

void recordCall(std::string_view name, std::string arguments)
{
    journal().push_back({std::string(name), std::move(arguments)});
}

void forgetCalls()
{
    journal().clear();
}

std::vector<std::string> callsTo(std::string_view name)
{
    std::vector<std::string> found;
    for (const Call& call : journal()) {
        if (call.name == name) {
            found.push_back(call.arguments);
        }
    }
    return found;
}

std::vector<std::string> orderOf(std::initializer_list<std::string_view> names)
{
    std::vector<std::string> found;
    for (const Call& call : journal()) {
        if (std::find(names.begin(), names.end(), call.name) != names.end()) {
            found.push_back(call.name + ": " + call.arguments);
        }
    }
    return found;
}
