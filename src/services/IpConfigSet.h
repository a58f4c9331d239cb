// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>

// Stages the changes of an IpConfiguration document, refuses a result that leaves the card without any interface,
// and commits. Returns 0, or -1: staged changes of the network are then reverted, but for those whose commit failed.
int configureInterfaces(std::string payload);
