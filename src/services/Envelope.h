// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>

// Who a request is from and which card it is for.
struct Envelope {
    std::string from;
    std::string to;
};

// Reads the attributes From and To of the root element, whose name must begin with "IpConfiguration" or with
// "RebootCard". Returns 0, or -1 after logging.
int parseEnvelope(std::string payload, std::string& from, std::string& to);
