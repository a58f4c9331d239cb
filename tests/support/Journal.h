// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// Every call that reached a fake, in the order of the calls, with its arguments as a person would write them down.
struct Call {
    std::string name;
    std::string arguments;
};

void recordCall(std::string_view name, std::string arguments);
void forgetCalls();

// The arguments of each call to one function: callsTo("mkdir") is {"/tmp/upgrade 0777"}.
std::vector<std::string> callsTo(std::string_view name);

// The calls to any of these functions in their order, as "name: arguments". Log lines are there as "log".
std::vector<std::string> orderOf(std::initializer_list<std::string_view> names);
