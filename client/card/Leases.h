// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Queries.h"

#include <map>
#include <set>
#include <string>
#include <vector>

// Did the card send this from an address that its settings state?
[[nodiscard]] bool isSentAsStated(const CardIp& answer);

// The addresses that a card answers from and does not state, as DHCP interfaces do. An answer does not tell which of
// them it came over, but each answers a question once: so their number tells whether all of them were heard, or more
// than there are.
class Leases
{
public:
    // An answer to the question of that number, which is the same on all interfaces.
    void hear(int question, const CardIp& answer);

    [[nodiscard]] bool areTooMany(int question, const CardIp& answer) const;
    // Has each DHCP interface answered the question, from an address that is none of those?
    [[nodiscard]] bool areAll(int question, const CardIp& answer, const std::vector<std::string>& besides) const;

private:
    std::map<int, std::set<std::string>> senders; // by question
};
